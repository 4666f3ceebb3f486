#pragma once

#include "log_perf/PerformanceSample.h"

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace vqrx::log::log_perf::v2 {

/// The counters that other code raises.
struct PerformanceCounters {
    std::uint32_t numResync = 0;
    std::uint32_t numTsDiscontinuity = 0;
    std::uint32_t numDecPictures = 0;
    std::uint32_t numPoliticChoices = 0;
};

/// Everything a value row says, in no particular order.
struct PerformanceFigures {
    std::int64_t cpu = 0;      ///< percent of all processors
    std::int64_t totalCpu = 0; ///< percent
    PerformanceSample sample;
    PerformanceCounters counters;
    std::uint32_t numBufferFull = 0;
    std::vector<std::pair<std::string, std::int32_t>> pins; ///< in name order
    std::uint64_t lastDelta = 0;
    std::uint64_t periodsOverThreshold = 0;
    bool needRestart = false;
};

/// One comma-separated row each, a comma after every field, the last included, and no line end.
std::string PerformanceHeaderRow(const PerformanceFigures& figures);
std::string PerformanceValueRow(const PerformanceFigures& figures);

} // namespace vqrx::log::log_perf::v2
