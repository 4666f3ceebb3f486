#pragma once

#include "log_perf/queue/LogRecord.h"
#include "sync_ptr/Guarded.h"

#include <atomic>
#include <cstddef>
#include <list>
#include <string_view>

namespace vqrx::log::log_perf::v2 {

/// Bounded queue of records: any thread appends, the worker thread takes. Appending never waits for
/// the worker. If 1000 records wait, a record that reports the overflow is appended instead of the
/// caller's; all later records are lost until the worker has taken the last one.
// NOLINTNEXTLINE(clang-analyzer-optin.performance.Padding): see kCacheLine
class MessageQueue {
public:
    static constexpr std::size_t kMaxWaiting = 1000;

    /// Size of a line of the processor's cache (x86-64), bytes. Two cores that write to one line
    /// wait for each other. So data of the callers, data of the worker and data of both lie in
    /// different lines.
    static constexpr std::size_t kCacheLine = 64;

    /// @throws ATL::CAtlException if the lock cannot be made
    MessageQueue() = default;
    MessageQueue(const MessageQueue&) = delete;
    MessageQueue& operator=(const MessageQueue&) = delete;
    ~MessageQueue() = default;

    /// Appends a record, in the memory of a record that was delivered before, if there is one.
    /// Any thread.
    /// @return whether a record was appended: the caller's, or the one that reports the overflow
    /// @throws std::bad_alloc, with the queue unchanged
    [[nodiscard]] bool Append(int level, const Timestamp& timestamp, std::string_view text);

    /// Takes the oldest record. Worker thread only.
    /// @return the record, valid until the next call; null if the queue is empty
    [[nodiscard]] const LogRecord* Take() noexcept;

    /// Whether no record waits. Any thread; exact only on the worker thread.
    [[nodiscard]] bool IsEmpty() const noexcept { return waiting_ == 0; }

private:
    struct Incoming {
        std::list<LogRecord> records; // appended, not yet collected by the worker
        std::list<LogRecord> spare;   // already delivered; their memory is used again
    };

    void Collect() noexcept;

    alignas(kCacheLine) system::sync_ptr::v1::Guarded<Incoming> incoming_;

    // Worker thread only.
    alignas(kCacheLine) std::list<LogRecord> collected_; // not yet taken
    std::list<LogRecord> delivered_;                     // taken; the latest one is in front

    // Number of records in incoming_ and collected_. Raised under the lock.
    alignas(kCacheLine) std::atomic<std::size_t> waiting_ = 0;
    std::atomic<bool> overflowed_ = false; // changed under the lock
};

} // namespace vqrx::log::log_perf::v2
