#include "SimulatedTicks.h"

#include <atomic>
#include <mutex>

namespace vqrx::test {
namespace {

using WaitFunction = DWORD WINAPI(DWORD, const HANDLE*, BOOL, DWORD);

std::atomic<DWORD> now{0};
std::atomic<bool> runs{false};
std::atomic<WaitFunction*> realWait{nullptr};
std::mutex waitsMutex;
std::vector<SimulatedTicks::Wait> waits;
thread_local bool readsTicks =
    false; // set on the logger's worker, not on threads of a runtime library

DWORD WINAPI SimulatedTick()
{
    readsTicks = true;
    return now;
}

DWORD WINAPI SimulatedWait(DWORD count, const HANDLE* handles, BOOL all, DWORD timeout)
{
    WaitFunction* const real = realWait;
    if (!readsTicks || timeout == INFINITE) {
        return real(count, handles, all, timeout);
    }
    readsTicks = false;
    const DWORD begun = now;
    // One real millisecond stands for the whole simulated timeout.
    const DWORD result = real(count, handles, all, runs && timeout != 0 ? 1 : timeout);
    if (runs && result == WAIT_TIMEOUT) {
        now += timeout;
    }
    const std::lock_guard lock(waitsMutex);
    if (waits.size() < 100) {
        waits.push_back({begun, timeout, result == WAIT_TIMEOUT});
    }
    return result;
}

} // namespace

SimulatedTicks::SimulatedTicks(DWORD start, Mode mode)
    : tick_("GetTickCount", &SimulatedTick)
    , wait_("WaitForMultipleObjects", &SimulatedWait, realWait)
{
    now = start;
    readsTicks = false; // an earlier test may have set it on this thread
    runs = mode == Mode::kRuns;
    const std::lock_guard lock(waitsMutex);
    waits.clear();
}

void SimulatedTicks::Advance(DWORD milliseconds)
{
    now += milliseconds;
}

std::vector<SimulatedTicks::Wait> SimulatedTicks::Waits()
{
    const std::lock_guard lock(waitsMutex);
    return waits;
}

} // namespace vqrx::test
