#pragma once

#include "log_perf/Timestamp.h"

namespace vqrx::log::log_perf::v2 {

/// The current time as _ftime64 gives it, without its cost: the time zone and whether daylight
/// saving holds are asked for once a minute, in which both can change. Any thread.
Timestamp CurrentTimestamp() noexcept;

} // namespace vqrx::log::log_perf::v2
