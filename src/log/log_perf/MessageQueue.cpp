#include "log_perf/MessageQueue.h"

#include "log_perf/Clock.h"

#include <windows.h>

#include <process.h>

namespace vqrx::log::log_perf::v2 {
namespace {

using system::sync_ptr::v1::CriticalSectionHold;

constexpr DWORD kPauseWithoutKernelObjects = 10; // milliseconds

// The memory of a longer text is not kept: there are up to kMaxWaiting of them.
constexpr std::size_t kMaxSpareText = 512;

} // namespace

MessageQueue::MessageQueue(IQueueOwner& owner)
    : owner_(owner)
{
    const auto created = _beginthreadex(nullptr, 0, WorkerEntry, this, 0, nullptr);
    worker_.Reset(reinterpret_cast<HANDLE>(created)); // NOLINT(performance-no-int-to-ptr)
}

MessageQueue::~MessageQueue()
{
    {
        const CriticalSectionHold hold(lock_);
        stopping_ = true;
    }
    signal_.Stop();
    WaitForSingleObject(worker_.Get(), INFINITE);
}

void MessageQueue::Append(int level, const Timestamp& timestamp, std::string_view text)
{
    {
        const CriticalSectionHold hold(lock_);
        if (overflowed_) {
            return;
        }
        if (spare_.empty()) {
            spare_.emplace_back();
        }
        LogRecord& record = spare_.front();
        if (waiting_ < kMaxWaiting) {
            record.text.assign(text);
            record.level = level;
            record.timestamp = timestamp;
        } else {
            record.text.assign("Overflowed message queue.");
            record.level = 0;
            record.timestamp = CurrentTimestamp();
            overflowed_ = true;
        }
        records_.splice(records_.end(), spare_, spare_.begin());
        ++waiting_;
    }
    signal_.Post();
}

// All that wait are collected at once, so that the worker seldom meets a caller at the lock; they
// count as waiting until each is taken. What was delivered makes room for what comes: a steady
// stream of records allocates nothing.
void MessageQueue::Collect() noexcept
{
    delivered_.remove_if(
        [](const LogRecord& record) { return record.text.capacity() > kMaxSpareText; });
    const CriticalSectionHold hold(lock_);
    spare_.splice(spare_.begin(), delivered_);
    collected_.swap(records_);
}

void MessageQueue::DeliverOne() noexcept
{
    if (collected_.empty()) {
        Collect();
    }
    if (collected_.empty()) {
        return;
    }
    delivered_.splice(delivered_.begin(), collected_, collected_.begin());
    // Looked at before the count: between an emptied queue and the look it could be filled again.
    const bool overflowed = overflowed_;
    if (--waiting_ == 0 && overflowed) {
        const CriticalSectionHold hold(lock_);
        overflowed_ = false;
    }
    owner_.Deliver(delivered_.front());
}

void MessageQueue::DeliverAll() noexcept
{
    while (waiting_ != 0) {
        DeliverOne();
    }
}

void MessageQueue::WorkUnsignalled(bool reportDue) noexcept
{
    DeliverAll();
    if (reportDue) {
        owner_.MakeReport();
    }
    Sleep(kPauseWithoutKernelObjects);
}

bool MessageQueue::Stopping() noexcept
{
    const CriticalSectionHold hold(lock_);
    return stopping_;
}

void MessageQueue::Work() noexcept
{
    for (;;) {
        const std::uint32_t timeout = owner_.TimeUntilReport();
        switch (signal_.Wait(timeout)) {
        case WorkerSignal::Result::kStop:
            DeliverAll();
            return;
        case WorkerSignal::Result::kRecord:
            DeliverOne();
            break;
        case WorkerSignal::Result::kTimedOut:
            owner_.MakeReport();
            break;
        case WorkerSignal::Result::kFailed:
            if (Stopping()) {
                DeliverAll();
                return;
            }
            WorkUnsignalled(timeout == 0);
            break;
        }
    }
}

unsigned __stdcall MessageQueue::WorkerEntry(void* queue) noexcept
{
    static_cast<MessageQueue*>(queue)->Work();
    return 0;
}

} // namespace vqrx::log::log_perf::v2
