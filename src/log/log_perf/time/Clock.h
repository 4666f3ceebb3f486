#pragma once

#include "log_perf/time/Timestamp.h"

namespace vqrx::log::log_perf::v2 {

/// Returns the current time with the values that _ftime64 would give, at a fraction of its cost: it
/// asks for the time zone and the daylight flag only once a minute. Both change only at the start
/// of a minute. Any thread; takes no lock.
[[nodiscard]] Timestamp CurrentTimestamp() noexcept;

} // namespace vqrx::log::log_perf::v2
