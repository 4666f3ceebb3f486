#pragma once

#include "log_perf/Timestamp.h"

namespace vqrx::log::log_perf::v2 {

/// The current time as _ftime64 gives it. Any thread.
Timestamp CurrentTimestamp() noexcept;

} // namespace vqrx::log::log_perf::v2
