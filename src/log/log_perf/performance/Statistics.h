#pragma once

#include "log_perf/performance/PerformanceRow.h"
#include "log_perf/performance/PinRateLimiter.h"
#include "sync_ptr/Guarded.h"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>

namespace vqrx::log::log_perf::v2 {

/// An output pin that was registered for notices of full buffers.
struct Pin {
    std::shared_ptr<std::uint32_t> count; ///< notices since it was registered
    PinRateLimiter limiter;
};

/// The numbers that other code raises and that the report shows.
struct Statistics {
    PerformanceCounters counters;
    std::uint32_t previousPoliticChoices = 0; ///< counters.numPoliticChoices at the last report
    std::map<std::string, Pin, std::less<>> pins;
};

/// The statistics inside the statistics lock. The log lock may be taken inside it.
using GuardedStatistics = system::sync_ptr::v1::Guarded<Statistics>;

} // namespace vqrx::log::log_perf::v2
