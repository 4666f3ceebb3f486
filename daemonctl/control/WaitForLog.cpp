#include "WaitForLog.h"

#include "ProcessList.h"
#include "RunOfProcess.h"
#include "SupervisorProcesses.h"
#include "ThisMachine.h"

#include <windows.h>

namespace vqrx::client::v0 {
namespace {

constexpr DWORD kReadAgainMs = 100;

// Returns the newest supervisor's process: a former one may still end. Nothing is known of it if
// this user may not examine it, or if Windows does not list the processes.
ProcessFacts NewestSupervisor()
{
    try {
        const std::vector<ProcessFacts> running = SupervisorProcesses().Running();
        return running.empty() ? ProcessFacts() : running.back();
    } catch (const ProcessListUnreadable&) {
        return {};
    }
}

// The number of the last record before the start decides without a look at the processes.
bool IsRunOfStarted(const SupervisorRun& run, const ProcessFacts& supervisor,
                    std::optional<std::int64_t> lastNumberBefore)
{
    return lastNumberBefore ? IsRunOf(run, {supervisor.createdMs, lastNumberBefore, {}})
                            : IsRunOfProcess(run, supervisor);
}

} // namespace

Timeline ReadTimelineOfRunning(std::optional<std::int64_t> lastNumberBefore)
{
    const ProcessFacts supervisor = NewestSupervisor();
    const ULONGLONG start = GetTickCount64();
    for (;;) {
        Timeline timeline = ReadTimeline();
        const SupervisorRun* const run = RunThatGoesOn(timeline);
        if (run != nullptr && IsRunOfStarted(*run, supervisor, lastNumberBefore)) {
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
    const Timeline timeline = ReadTimelineOfRunning(lastNumberBefore);
    return DaemonsOf(RunKnownToGoOn(timeline), children);
}

bool WaitForLog(const std::function<bool(const SupervisorRun& run)>& isShown)
{
    const ULONGLONG start = GetTickCount64();
    for (;;) {
        const Timeline timeline = ReadTimeline();
        if (isShown(RunKnownToGoOn(timeline))) {
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
