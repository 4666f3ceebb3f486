#include "log_perf/WorkerSignal.h"

#include <windows.h>

namespace vqrx::log::log_perf::v2 {
namespace {

constexpr LONG kMaxCount = 0x7FFFFFFF;

} // namespace

WorkerSignal::WorkerSignal() noexcept
    : semaphore_(CreateSemaphoreA(nullptr, 0, kMaxCount, nullptr))
    , stopEvent_(CreateEventA(nullptr, FALSE, FALSE, nullptr))
{
}

void WorkerSignal::Post() noexcept
{
    ReleaseSemaphore(semaphore_.Get(), 1, nullptr);
}

void WorkerSignal::Stop() noexcept
{
    SetEvent(stopEvent_.Get());
}

WorkerSignal::Result WorkerSignal::Wait(std::uint32_t timeoutMs) noexcept
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
