#include "log_perf/WorkerSignal.h"

#include <algorithm>

#include <windows.h>

namespace vqrx::log::log_perf::v2 {
namespace {

constexpr LONG kMaxCount = 0x7FFFFFFF;

// Looking so often for a record takes about as long as waking a worker that sleeps.
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
        return WaitInKernel(timeoutMs); // fails, and leaves the pace to the caller
    }
    if (stopping_) { // the event is there or about to come
        stopping_ = false;
        WaitForSingleObject(stopEvent_.Get(), INFINITE);
        return Result::kStop;
    }
    const bool taken = busy_ && TakeSoon(timeoutMs);
    const Result result = taken ? Result::kRecord : SleepFor(timeoutMs);
    busy_ = result == Result::kRecord;
    return result;
}

// Records come in bursts: one that follows at once finds the worker awake, and its caller need not
// wake it. On a busy machine a thread that gives way may be back after many milliseconds only: that
// time is the caller's as well.
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
    if (count_.TakeOrSleep()) {
        return Result::kRecord;
    }
    const Result result = WaitInKernel(timeoutMs);
    if (result == Result::kStop) {
        stopping_ = false;
    }
    if (result == Result::kRecord || count_.Wake()) {
        return result;
    }
    WaitForSingleObject(semaphore_.Get(), INFINITE); // a record came at the same moment
    if (result != Result::kStop) {
        return Result::kRecord;
    }
    static_cast<void>(count_.Add()); // it is told of when it is asked for next
    return Result::kStop;
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
