#include "WaitForLog.h"

#include "ProcessList.h"
#include "RunOfProcess.h"
#include "SupervisorProcesses.h"
#include "ThisMachine.h"
#include "TimeText.h"

#include <windows.h>

namespace vqrx::client::v0 {
namespace {

constexpr DWORD kReadAgainMs = 100;

// Returns when the process of the running supervisor was created; 0 if this user may not examine
// it, or if Windows does not list the processes.
std::int64_t SupervisorCreatedMs()
{
    try {
        const std::vector<ProcessFacts> running = SupervisorProcesses().Running();
        return running.empty() ? 0 : running.back().createdMs;
    } catch (const ProcessListUnreadable&) {
        return 0;
    }
}

} // namespace

Timeline ReadTimelineOfRunning(std::optional<std::int64_t> lastNumberBefore)
{
    const StartOfSupervisor started{SupervisorCreatedMs(), lastNumberBefore};
    const ULONGLONG start = GetTickCount64();
    for (;;) {
        Timeline timeline = ReadTimeline();
        const SupervisorRun* const run = RunThatGoesOn(timeline);
        if (run != nullptr && IsRunOf(*run, started)) {
            return timeline;
        }
        if (GetTickCount64() - start > kLogPatienceMs) {
            throw LogUnreadable(kRunNotShown);
        }
        Sleep(kReadAgainMs);
    }
}

DaemonsNow ReadDaemonsOfRunning(const std::vector<ProcessFacts>& children,
                                std::optional<std::int64_t> lastNumberBefore)
{
    return DaemonsIn(ReadTimelineOfRunning(lastNumberBefore), children);
}

bool WaitForLog(const std::function<bool(const SupervisorRun& run)>& isShown)
{
    const ULONGLONG start = GetTickCount64();
    for (;;) {
        const Timeline timeline = ReadTimeline();
        if (isShown(RunOfThisMachine(timeline))) {
            return true;
        }
        if (GetTickCount64() - start > kLogPatienceMs) {
            return false;
        }
        Sleep(kReadAgainMs);
    }
}

bool WaitForDaemonInLog(std::uint32_t daemonId)
{
    return WaitForLog(
        [daemonId](const SupervisorRun& run) { return run.Find(daemonId) != nullptr; });
}

bool IsShownByLog(std::uint32_t daemonId)
{
    try {
        return WaitForDaemonInLog(daemonId);
    } catch (const LogUnreadable&) {
        return false;
    }
}

} // namespace vqrx::client::v0
