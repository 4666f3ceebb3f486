#include "log_perf/MessageQueue.h"

#include "log_perf/Clock.h"

#include <windows.h>

#include <process.h>

#include <algorithm>
#include <climits>
#include <utility>

namespace vqrx::log::log_perf::v2 {
namespace {

using system::sync_ptr::v1::CriticalSectionHold;

constexpr DWORD kPauseWithoutKernelObjects = 10; // milliseconds

} // namespace

MessageQueue::MessageQueue(IQueueOwner& owner)
    : owner_(owner)
{
    semaphore_.Reset(CreateSemaphoreA(nullptr, 0, LONG_MAX, nullptr));
    stopEvent_.Reset(CreateEventA(nullptr, FALSE, FALSE, nullptr));
    const auto created = _beginthreadex(nullptr, 0, WorkerEntry, this, 0, nullptr);
    worker_.Reset(reinterpret_cast<HANDLE>(created)); // NOLINT(performance-no-int-to-ptr)
}

MessageQueue::~MessageQueue()
{
    {
        const CriticalSectionHold hold(lock_);
        stopping_ = true;
    }
    SetEvent(stopEvent_.Get());
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
    ReleaseSemaphore(semaphore_.Get(), 1, nullptr);
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

void MessageQueue::Work() noexcept
{
    const HANDLE waitList[] = {stopEvent_.Get(), semaphore_.Get()};
    for (;;) {
        const DWORD timeout = owner_.TimeUntilReport();
        switch (WaitForMultipleObjects(2, waitList, FALSE, timeout)) {
        case WAIT_OBJECT_0:
            DeliverAll();
            return;
        case WAIT_OBJECT_0 + 1:
            DeliverOne();
            break;
        case WAIT_FAILED: {
            // The kernel objects could not be made. Without them the queue is looked at now and
            // then, so that nothing is lost, the processor is left alone and the end is noticed.
            DeliverAll();
            {
                const CriticalSectionHold hold(lock_);
                if (stopping_) {
                    return;
                }
            }
            if (timeout == 0) {
                owner_.MakeReport();
            }
            Sleep(kPauseWithoutKernelObjects);
            break;
        }
        default:
            owner_.MakeReport();
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
