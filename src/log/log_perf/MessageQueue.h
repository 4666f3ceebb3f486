#pragma once

#include "log_perf/LogRecord.h"
#include "log_perf/WorkerSignal.h"
#include "sync_ptr/CriticalSection.h"
#include "win32/UniqueHandle.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <list>
#include <string_view>

namespace vqrx::log::log_perf::v2 {

/// What the queue's worker thread works for.
class IQueueOwner {
public:
    IQueueOwner() = default;
    IQueueOwner(const IQueueOwner&) = delete;
    IQueueOwner& operator=(const IQueueOwner&) = delete;

    /// Hands a record to the sinks. Worker thread only.
    virtual void Deliver(const LogRecord& record) noexcept = 0;
    /// Milliseconds until the next report is due. Worker thread only.
    virtual std::uint32_t TimeUntilReport() noexcept = 0;
    /// Makes the report. Worker thread only.
    virtual void MakeReport() noexcept = 0;

protected:
    ~IQueueOwner() = default;
};

/// Bounded queue of records and the worker thread that empties it. Appending never waits for the
/// worker. When 1000 records wait, one record says so and everything after it is lost until the
/// worker has emptied the queue.
// NOLINTNEXTLINE(clang-analyzer-optin.performance.Padding): its members are kept apart on purpose
class MessageQueue {
public:
    static constexpr std::size_t kMaxWaiting = 1000;

    /// Starts the worker. owner must outlive the queue and be ready to be called at once.
    explicit MessageQueue(IQueueOwner& owner);
    MessageQueue(const MessageQueue&) = delete;
    MessageQueue& operator=(const MessageQueue&) = delete;

    /// Ends the worker after it has delivered what is queued.
    ~MessageQueue();

    /// Any thread. In memory that an earlier record has used, where there is some.
    /// @throws std::bad_alloc, with the queue as it was
    void Append(int level, const Timestamp& timestamp, std::string_view text);

private:
    static unsigned __stdcall WorkerEntry(void* queue) noexcept;
    void Work() noexcept;
    /// One round without kernel objects: the queue is looked at now and then, so that nothing is
    /// lost, the processor is left alone and the end is noticed.
    void WorkUnsignalled(bool reportDue) noexcept;
    bool Stopping() noexcept;
    void DeliverOne() noexcept;
    void DeliverAll() noexcept;
    void Collect() noexcept;

    // What the callers write to, what the worker writes to, and what both do lie in lines of the
    // processor's cache of their own: two cores that write to one line wait for each other.
    static constexpr std::size_t kCacheLine = 64; // of x86-64

    IQueueOwner& owner_;
    system::win32::v1::UniqueKernelHandle worker_;

    alignas(kCacheLine) std::list<LogRecord> records_; // under lock_: not yet collected
    std::list<LogRecord> spare_; // under lock_: delivered, kept for their memory
    bool stopping_ = false;      // under lock_
    system::sync_ptr::v1::CriticalSection lock_;

    alignas(kCacheLine) std::list<LogRecord> collected_; // worker thread only: not yet delivered
    std::list<LogRecord> delivered_; // worker thread only: the one being delivered is in front

    // In records_ and collected_; raised under lock_.
    alignas(kCacheLine) std::atomic<std::size_t> waiting_ = 0;
    std::atomic<bool> overflowed_ = false; // changed under lock_

    alignas(kCacheLine) WorkerSignal signal_; // counts the waiting records
};

} // namespace vqrx::log::log_perf::v2
