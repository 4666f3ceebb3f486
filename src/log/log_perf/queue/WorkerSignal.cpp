#include "log_perf/queue/WorkerSignal.h"

#include <algorithm>

#include <windows.h>

namespace vqrx::log::log_perf::v2 {
namespace {

constexpr LONG kMaxCount = 0x7FFFFFFF;

// How often TakeSoon looks for a record: together about as long as it takes to wake a thread.
constexpr int kLooks = 100;

} // namespace

WorkerSignal::WorkerSignal() noexcept
    : semaphore_(CreateSemaphoreA(nullptr, 0, kMaxCount, nullptr))
    , stopEvent_(CreateEventA(nullptr, FALSE, FALSE, nullptr))
{
}

void WorkerSignal::Post() noexcept
{
    if (count_.Add()) {
        ReleaseSemaphore(semaphore_.Get(), 1, nullptr);
    }
}

void WorkerSignal::Stop() noexcept
{
    stopping_ = true;
    SetEvent(stopEvent_.Get());
}

WorkerSignal::Result WorkerSignal::Wait(std::uint32_t timeoutMs) noexcept
{
    if (!semaphore_ || !stopEvent_) {
        return WaitInKernel(timeoutMs); // fails at once: one of the handles is null
    }
    if (stopping_) { // Stop sets this flag first, then the event: the wait below is short
        stopping_ = false;
        WaitForSingleObject(stopEvent_.Get(), INFINITE);
        return Result::kStop;
    }
    const bool taken = busy_ && TakeSoon(timeoutMs);
    const Result result = taken ? Result::kRecord : SleepFor(timeoutMs);
    busy_ = result == Result::kRecord;
    return result;
}

// Records come in bursts. If the next record finds the worker awake, its caller need not wake it.
// On a busy machine SwitchToThread may return only after many milliseconds; they count as waiting
// time.
bool WorkerSignal::TakeSoon(std::uint32_t& timeoutMs) noexcept
{
    for (int look = 0; look < kLooks && timeoutMs != 0 && !stopping_; ++look) {
        if (count_.TryTake()) {
            return true;
        }
        const DWORD before = GetTickCount();
        SwitchToThread();
        if (timeoutMs != INFINITE) {
            timeoutMs -= std::min<std::uint32_t>(timeoutMs, GetTickCount() - before);
        }
    }
    return false;
}

WorkerSignal::Result WorkerSignal::SleepFor(std::uint32_t timeoutMs) noexcept
{
    while (!count_.TakeOrSleep()) {
        const Result result = WaitInKernel(timeoutMs);
        if (result == Result::kStop) {
            stopping_ = false;
        }
        if (!count_.Wake()) { // a caller has added a record
            if (result == Result::kStop) {
                static_cast<void>(count_.Add()); // puts it back: the next Wait returns it
            }
            return result == Result::kStop ? Result::kStop : Result::kRecord;
        }
        if (result != Result::kRecord) {
            return result;
        }
        // The semaphore was released for a record that another Wait has returned.
    }
    return Result::kRecord;
}

WorkerSignal::Result WorkerSignal::WaitInKernel(std::uint32_t timeoutMs) noexcept
{
    const HANDLE waitList[] = {stopEvent_.Get(), semaphore_.Get()};
    switch (WaitForMultipleObjects(2, waitList, FALSE, timeoutMs)) {
    case WAIT_OBJECT_0:
        return Result::kStop;
    case WAIT_OBJECT_0 + 1:
        return Result::kRecord;
    case WAIT_TIMEOUT:
        return Result::kTimedOut;
    default:
        return Result::kFailed;
    }
}

} // namespace vqrx::log::log_perf::v2
