#pragma once

#include "IBufferFullNotifier.h"
#include "log_perf/ILogPerf.h"
#include "log_perf/performance/BufferFullPeriods.h"
#include "log_perf/performance/PerformanceReport.h"
#include "log_perf/performance/Statistics.h"
#include "log_perf/queue/MessageQueue.h"
#include "log_perf/queue/Worker.h"
#include "log_perf/sink/ILogSink.h"
#include "log_perf/sink/IPerformanceObserver.h"
#include "log_perf/sink/Receivers.h"
#include "sync_ptr/CriticalSection.h"

namespace vqrx::log::log_perf::v2 {

/// The one logger of the process. It formats a message on the caller's thread and queues it; a
/// worker thread hands it to the sinks. So no caller waits for the console or the disk. The worker
/// thread also makes a performance report once a second.
/// Locks, in the order in which they may be taken: sink or statistics, then log, then queue. The
/// buffer-full lock is taken alone.
class LibLogPerf final : public ILogPerf, public i_buffer_full_notifier::v0::IBufferFullNotifier {
public:
    /// Starts the worker thread.
    /// @throws ATL::CAtlException if a lock cannot be made; std::bad_alloc
    LibLogPerf();
    LibLogPerf(const LibLogPerf&) = delete;
    LibLogPerf& operator=(const LibLogPerf&) = delete;

    /// Waits until every queued message is delivered, then ends the worker thread.
    ~LibLogPerf() override;

    /// Adds a sink. The sink gets every message that the worker delivers from now on; messages that
    /// are in the queue already are among them. A null pointer is ignored; a sink that is added
    /// twice gets each message once. A sink cannot be removed. Any thread.
    /// @param sink  not owned: must outlive the logger
    /// @throws std::bad_alloc, with the sinks unchanged
    void AddSink(ILogSink* sink);

    /// See ILogger. If memory runs out, the message is lost.
    void Log(int level, const char* format, ...) override VQRX_PRINTF(3, 4);

    void ReportPerformance() override;
    void IncrementResync() override;
    void IncrementTsDiscontinuity() override;
    void IncrementDecodedPictures() override;
    void AddPoliticChoices(int count) override;

    void RegisterPin(const char* name) override;
    void NotifyBufferFull(const char* name) override;

    /// Sets the sink that gets the rows of the report, the header row first. Any thread.
    /// @param sink  null: nobody gets them. Not owned: must outlive the logger, even if another
    ///              sink is set later
    void SetPerformanceSink(ILogSink* sink);

    /// Sets the observer that gets the key figures of each report. Any thread.
    /// @param observer  null: nobody gets them. Not owned: must outlive the logger
    void SetPerformanceObserver(IPerformanceObserver* observer);

    /// Sets how CheckBufferFullPeriod judges from now on. Counts are kept. Any thread.
    void SetBufferFullSettings(const BufferFullSettings& settings);

    /// Judges one period: the notices of full buffers of all pins since the call before. Call it at
    /// a steady pace. Any thread.
    void CheckBufferFullPeriod();

private:
    GuardedReceivers receivers_; // the sink lock
    PerformanceReport report_;   // worker thread only
    GuardedStatistics statistics_;
    GuardedBufferFullPeriods bufferFull_;
    system::sync_ptr::v1::CriticalSection logLock_; // held during each Log: orders the messages
    MessageQueue queue_;
    Worker worker_; // last: its thread uses everything above
};

} // namespace vqrx::log::log_perf::v2
