#pragma once

#include <cstdint>

namespace vqrx::log::log_perf::v2 {

/// Receives the key figures of every performance report. The logger does not own its observer: it
/// must outlive the logger.
class IPerformanceObserver {
public:
    IPerformanceObserver() = default;
    IPerformanceObserver(const IPerformanceObserver&) = delete;
    IPerformanceObserver& operator=(const IPerformanceObserver&) = delete;
    virtual ~IPerformanceObserver() = default;

    /// Called once per report by the logger's worker thread, which holds the logger's sink lock:
    /// return at once, and call no function of the logger but Log. Exceptions are ignored.
    /// @param cpu               the process's share of all processors, percent
    /// @param committedPercent  committed share of the machine's page file limit, percent
    /// @param workingSetMiB     working set of the process, MiB
    /// @param choicesPerSecond  growth of the politic choices counter
    virtual void OnPerformance(std::int32_t cpu, std::int32_t committedPercent,
                               std::int32_t workingSetMiB, std::int32_t choicesPerSecond) = 0;
};

} // namespace vqrx::log::log_perf::v2
