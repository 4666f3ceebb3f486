#pragma once

#include "log_perf/PerformanceSample.h"

namespace vqrx::log::log_perf::v2 {

/// Asks Windows for the figures. What it does not tell stays 0. Any thread; never fails.
PerformanceSample SamplePerformance() noexcept;
SystemTimes SampleSystemTimes() noexcept;

} // namespace vqrx::log::log_perf::v2
