#include "WatchDaemon.h"

#include "ThisMachine.h"
#include "WaitForLog.h"

#include <windows.h>

#include <optional>

namespace vqrx::client::v0 {
namespace {

constexpr DWORD kBetweenLooksMs = 200;

} // namespace

WatchEnd WatchDaemon(std::uint32_t daemonId, std::uint32_t seconds, const ProcessSource& source,
                     const WatchAim& reached, Observation& now)
{
    const ULONGLONG start = GetTickCount64();
    Observation first;
    std::optional<RunMark> lastLook;
    if (RunThatGoesOn(ReadTimeline()) != nullptr) {
        lastLook = MarkOf(RunKnownToGoOn(ReadTimelineOfRunning()));
    }
    for (;;) {
        const Timeline timeline = ReadTimeline();
        const SupervisorRun* const run = RunThatGoesOn(timeline);
        if (run == nullptr || (lastLook && !IsSameRun(*lastLook, MarkOf(*run)))) {
            return WatchEnd::kSupervisorEnded;
        }
        lastLook = MarkOf(*run);
        now = Observe(*run, daemonId, source);
        first = first.known ? first : now;
        if (reached(first, now)) {
            return WatchEnd::kFulfilled;
        }
        if (GetTickCount64() - start >= ULONGLONG{seconds} * 1000) {
            return WatchEnd::kTimeOver;
        }
        Sleep(kBetweenLooksMs);
    }
}

} // namespace vqrx::client::v0
