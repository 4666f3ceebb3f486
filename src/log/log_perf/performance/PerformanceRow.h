#pragma once

#include "log_perf/performance/PerformanceSample.h"

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace vqrx::log::log_perf::v2 {

/// Counters that other code raises.
struct PerformanceCounters {
    std::uint32_t numResync = 0;
    std::uint32_t numTsDiscontinuity = 0;
    std::uint32_t numDecPictures = 0;
    std::uint32_t numPoliticChoices = 0;
};

/// All values of a value row.
struct PerformanceFigures {
    std::int64_t cpu = 0;      ///< share of all processors that the process used, percent
    std::int64_t totalCpu = 0; ///< share of all processors that was not idle, percent
    PerformanceSample sample;
    PerformanceCounters counters;
    std::uint32_t numBufferFull = 0;                        ///< sum of the counts of all pins
    std::vector<std::pair<std::string, std::int32_t>> pins; ///< name and count, by name
    std::uint64_t lastDelta = 0;                            ///< see BufferFullPeriods
    std::uint64_t periodsOverThreshold = 0;                 ///< see BufferFullPeriods
    bool needRestart = false;                               ///< see BufferFullPeriods
};

/// Formats the row of column names. A comma follows every field, the last included; there is no
/// line end. A pin's name is not escaped: a comma in it makes a further column.
/// @param figures  only the pins are used: one column for each
/// @throws std::bad_alloc
[[nodiscard]] std::string PerformanceHeaderRow(const PerformanceFigures& figures);

/// Formats the row of values, in the order of the header row and with the same commas.
/// @throws std::bad_alloc
[[nodiscard]] std::string PerformanceValueRow(const PerformanceFigures& figures);

} // namespace vqrx::log::log_perf::v2
