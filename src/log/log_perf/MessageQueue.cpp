#include "log_perf/MessageQueue.h"

#include "log_perf/Clock.h"

#include <windows.h>

#include <process.h>

#include <algorithm>
#include <utility>

namespace vqrx::log::log_perf::v2 {
namespace {

using system::sync_ptr::v1::CriticalSectionHold;

constexpr DWORD kPauseWithoutKernelObjects = 10; // milliseconds

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

void MessageQueue::Append(LogRecord record)
{
    std::list<LogRecord> node; // allocated outside the queue lock
    node.push_back(std::move(record));
    {
        const CriticalSectionHold hold(lock_);
        if (overflowed_) {
            return;
        }
        if (records_.size() >= kMaxWaiting) {
            LogRecord& notice = node.front();
            notice.text = "Overflowed message queue.";
            notice.level = 0;
            notice.timestamp = CurrentTimestamp();
            overflowed_ = true;
        }
        records_.splice(records_.end(), node);
    }
    signal_.Post();
}

std::size_t MessageQueue::Length() noexcept
{
    const CriticalSectionHold hold(lock_);
    return records_.size();
}

std::list<LogRecord> MessageQueue::Take() noexcept
{
    std::list<LogRecord> head;
    const CriticalSectionHold hold(lock_);
    if (!records_.empty()) {
        head.splice(head.end(), records_, records_.begin());
    }
    if (records_.empty()) {
        overflowed_ = false;
    }
    return head;
}

void MessageQueue::DeliverOne() noexcept
{
    const std::list<LogRecord> head = Take();
    if (!head.empty()) {
        owner_.Deliver(head.front());
    }
}

void MessageQueue::DeliverAll() noexcept
{
    while (Length() != 0) {
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
