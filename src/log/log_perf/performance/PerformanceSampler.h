#pragma once

#include "log_perf/performance/PerformanceSample.h"

namespace vqrx::log::log_perf::v2 {

/// Measures the process and the machine. A figure that Windows does not give is 0. Any thread.
[[nodiscard]] PerformanceSample SamplePerformance() noexcept;

/// Measures only the processor time of the machine; 0 if Windows does not give it. Any thread.
[[nodiscard]] SystemTimes SampleSystemTimes() noexcept;

} // namespace vqrx::log::log_perf::v2
