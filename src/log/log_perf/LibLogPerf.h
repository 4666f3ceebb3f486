#pragma once

#include "IBufferFullNotifier.h"
#include "log_perf/BufferFullPeriods.h"
#include "log_perf/ILogPerf.h"
#include "log_perf/ILogSink.h"
#include "log_perf/IPerformanceObserver.h"
#include "log_perf/MessageQueue.h"
#include "log_perf/PerformanceRow.h"
#include "log_perf/PinRateLimiter.h"
#include "sync_ptr/CriticalSection.h"

#include <cstdint>
#include <map>
#include <memory>
#include <set>
#include <string>

namespace vqrx::log::log_perf::v2 {

/// The one logger of the process. A message is formatted on the caller's thread, queued, and
/// written by a worker thread, so that no caller ever waits for the console or the disk. The same
/// worker measures the process once a second.
class LibLogPerf final : public ILogPerf,
                         public i_buffer_full_notifier::v0::IBufferFullNotifier,
                         private IQueueOwner {
public:
    /// @throws ATL::CAtlException when a lock cannot be made, std::bad_alloc
    LibLogPerf();
    LibLogPerf(const LibLogPerf&) = delete;
    LibLogPerf& operator=(const LibLogPerf&) = delete;

    /// Delivers everything that is queued, then ends the worker.
    ~LibLogPerf() override;

    /// Adds a sink for all later messages; null is ignored, a sink added twice is held once.
    /// Any thread. Not owned: the sink must outlive the logger. There is no way to remove one.
    void AddSink(ILogSink* sink);

    void Log(int level, const char* format, ...) override VQRX_PRINTF(3, 4);

    void ReportPerformance() override;
    void IncrementResync() override;
    void IncrementTsDiscontinuity() override;
    void IncrementDecodedPictures() override;
    void AddPoliticChoices(int count) override;

    void RegisterPin(const char* name) override;
    void NotifyBufferFull(const char* name) override;

    /// Where the performance rows go; null for nowhere. Not owned: must outlive the logger, also
    /// after another was set. The first row that a newly set sink receives is the header. Any
    /// thread.
    void SetPerformanceSink(ILogSink* sink);

    /// Whom to tell the key figures; null for nobody. Not owned: must outlive the logger. Any
    /// thread.
    void SetPerformanceObserver(IPerformanceObserver* observer);

    /// Any thread.
    void SetBufferFullSettings(const BufferFullSettings& settings);

    /// Advances the buffer-full period logic by one step. Any thread.
    void CheckBufferFullPeriod();

private:
    struct Pin {
        std::shared_ptr<std::uint32_t> count;
        PinRateLimiter limiter;
    };
    using SinkSet = std::set<ILogSink*>;
    using CriticalSection = system::sync_ptr::v1::CriticalSection;

    void Deliver(const LogRecord& record) noexcept override;
    std::uint32_t TimeUntilReport() noexcept override;
    void MakeReport() noexcept override;

    PerformanceFigures Collect(const PerformanceSample& sample, std::int64_t cpu);
    void Observe(const PerformanceFigures& figures, std::int32_t rate);
    void Emit(const PerformanceFigures& figures);

    // Replaced as a whole when a sink is added, so that the worker takes its copy without
    // allocating.
    std::shared_ptr<const SinkSet> sinks_;
    CriticalSection sinkLock_; // guards sinks_, the performance sink and observer, reportMade_
    ILogSink* performanceSink_ = nullptr;
    std::uint32_t performanceSinkChoice_ = 0; // tells a sink that was set anew from the one before
    IPerformanceObserver* performanceObserver_ = nullptr;

    // Written by the worker thread only.
    std::uint32_t lastReportTick_ = 0; // GetTickCount()
    std::uint32_t reportPeriodMs_ = 1000;
    bool reportMade_ = false; // the current performance sink has its header
    int noticeLevel_ = 1;
    SystemTimes previousSystem_;
    std::int64_t lastBusyDelta_ = 0;       // 100-ns units
    std::int64_t lastTotalCpu_ = 0;        // percent
    std::uint64_t previousKernelTime_ = 0; // 100-ns units
    std::uint64_t previousUserTime_ = 0;   // 100-ns units

    CriticalSection statisticsLock_;
    PerformanceCounters counters_;                 // under statisticsLock_
    std::uint32_t previousPoliticChoices_ = 0;     // under statisticsLock_
    std::map<std::string, Pin, std::less<>> pins_; // under statisticsLock_

    CriticalSection bufferFullLock_;
    BufferFullPeriods bufferFull_; // under bufferFullLock_

    CriticalSection logLock_; // held for the whole of each Log call: orders the messages
    MessageQueue queue_;      // last: its worker uses everything above
};

} // namespace vqrx::log::log_perf::v2
