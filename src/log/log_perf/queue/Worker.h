#pragma once

#include "log_perf/queue/MessageQueue.h"
#include "log_perf/queue/ReportClock.h"
#include "log_perf/queue/WorkerSignal.h"
#include "log_perf/sink/Receivers.h"
#include "win32/UniqueHandle.h"

#include <atomic>
#include <cstdint>
#include <functional>

namespace vqrx::log::log_perf::v2 {

/// The logger's thread: takes records from the queue, hands each one to every sink, and makes a
/// report once a period when no record waits.
/// If the thread cannot be started, each record tries again, and the destructor delivers the
/// records that no thread has delivered. If the kernel objects that wake the thread cannot be made,
/// it looks at the queue every 10 ms instead.
// NOLINTNEXTLINE(clang-analyzer-optin.performance.Padding): see MessageQueue::kCacheLine
class Worker {
public:
    /// Starts the thread. It uses the arguments at once and until the worker is destroyed. If the
    /// thread cannot be started, standard error gets a line.
    /// @param queue      must outlive the worker
    /// @param receivers  must outlive the worker
    /// @param periodMs   time between two reports, milliseconds
    /// @param report     makes one report; called on the thread; exceptions are ignored
    Worker(MessageQueue& queue, GuardedReceivers& receivers, std::uint32_t periodMs,
           std::function<void()> report);
    Worker(const Worker&) = delete;
    Worker& operator=(const Worker&) = delete;

    /// Waits, without a time limit, until the thread has delivered every queued record and ended.
    /// Without a thread, delivers them itself.
    ~Worker();

    /// Reports that one record was appended to the queue. Any thread, one at a time.
    void RecordAppended() noexcept;

private:
    void Start() noexcept;
    static unsigned __stdcall ThreadEntry(void* worker) noexcept;
    void Work() noexcept;
    void WorkWithoutSignal() noexcept;
    static void Deliver(const LogRecord& record, const SinkSet& sinks,
                        const SinkSet::value_type& sink) noexcept;
    void DeliverOne() noexcept;
    void DeliverAll() noexcept;
    void MakeReport() noexcept;

    MessageQueue& queue_;
    GuardedReceivers& receivers_;
    ReportClock clock_; // worker thread only
    const std::function<void()> report_;
    std::atomic<bool> stopping_ = false;

    alignas(MessageQueue::kCacheLine) WorkerSignal signal_; // counts the waiting records

    system::win32::v1::UniqueKernelHandle thread_; // last: the thread uses everything above
};

} // namespace vqrx::log::log_perf::v2
