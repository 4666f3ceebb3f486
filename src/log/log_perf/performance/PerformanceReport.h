#pragma once

#include "log_perf/performance/BufferFullPeriods.h"
#include "log_perf/performance/PerformanceRow.h"
#include "log_perf/performance/PerformanceSample.h"
#include "log_perf/performance/Statistics.h"
#include "log_perf/sink/Receivers.h"
#include "sync_ptr/Guarded.h"

#include <cstdint>

namespace vqrx::log::log_perf::v2 {

/// The periods inside the buffer-full lock.
using GuardedBufferFullPeriods = system::sync_ptr::v1::Guarded<BufferFullPeriods>;

/// Makes the performance reports: measures the process and the machine, passes the key figures to
/// the observer and one row to the performance sink. Worker thread only.
class PerformanceReport {
public:
    /// Measures the machine for the first time; does not use the arguments yet.
    /// @param receivers   must outlive the report
    /// @param statistics  must outlive the report
    /// @param bufferFull  must outlive the report
    /// @param periodMs    time between two reports, milliseconds
    PerformanceReport(GuardedReceivers& receivers, GuardedStatistics& statistics,
                      GuardedBufferFullPeriods& bufferFull, std::uint32_t periodMs) noexcept;
    PerformanceReport(const PerformanceReport&) = delete;
    PerformanceReport& operator=(const PerformanceReport&) = delete;
    ~PerformanceReport() = default;

    /// Makes one report. If the machine's counters stood still since the last one, there is neither
    /// a row nor a call of the observer.
    /// @throws std::bad_alloc; the next report is not affected
    void Make();

private:
    void AddBufferFull(PerformanceFigures& figures);
    /// @return the counter of politic choices (ILogPerf::AddPoliticChoices) at the last report
    [[nodiscard]] std::uint32_t AddStatistics(PerformanceFigures& figures);
    void Observe(const PerformanceFigures& figures, std::int32_t rate);
    void Emit(const PerformanceFigures& figures);

    GuardedReceivers& receivers_;
    GuardedStatistics& statistics_;
    GuardedBufferFullPeriods& bufferFull_;
    const std::uint32_t periodMs_;
    SystemTimes previousSystem_;
    std::uint64_t previousKernelTime_ = 0; // of the process, 100-ns units
    std::uint64_t previousUserTime_ = 0;   // of the process, 100-ns units
};

} // namespace vqrx::log::log_perf::v2
