#pragma once

#include <cstdint>

namespace vqrx::log::log_perf::v2 {

/// Told the key figures of every report. Called on the logger's worker thread under the logger's
/// sink lock: returns at once and calls nothing of the logger but Log. Must outlive the logger.
class IPerformanceObserver {
public:
    IPerformanceObserver() = default;
    IPerformanceObserver(const IPerformanceObserver&) = delete;
    IPerformanceObserver& operator=(const IPerformanceObserver&) = delete;
    virtual ~IPerformanceObserver() = default;

    /// @param cpu               the process's share of all processors, percent
    /// @param committedPercent  the machine's committed share of its page file limit, percent
    /// @param workingSetMiB     the process's working set
    /// @param choicesPerSecond  growth of the politic choices counter
    virtual void OnPerformance(std::int32_t cpu, std::int32_t committedPercent,
                               std::int32_t workingSetMiB, std::int32_t choicesPerSecond) = 0;
};

} // namespace vqrx::log::log_perf::v2
