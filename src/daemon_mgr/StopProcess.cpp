#include "StopProcess.h"

#include "InternalResult.h"
#include "ProcessWindows.h"
#include "SnmpAgent.h"

namespace vqrx::system::daemon::daemon_mgr::v0 {
namespace {

using host::v0::kFailure;
using host::v0::kSuccess;
using log::i_logger::v0::kLevelWarning;

// Sends the keystrokes X and Q, on which the SNMP agent quits, to each of its windows.
// @return whether the agent had a window
bool PostAgentKeystrokes(DWORD processId)
{
    const auto windows = WindowsOfProcess(processId);
    for (const HWND window : windows) {
        PostMessageA(window, WM_CHAR, 'X', 0);
        PostMessageA(window, WM_CHAR, 'Q', 0);
    }
    return !windows.empty();
}

// @return whether the agent closed its windows before the last round. In the last round the answer
// is false even if the windows have just closed: the general steps of a stop then follow.
bool CloseAgentWindows(DWORD processId, const StopTimings& timings)
{
    if (!PostAgentKeystrokes(processId)) {
        return true;
    }
    for (std::uint32_t round = 0;; ++round) {
        Sleep(timings.agentRoundMs);
        const bool hasWindows = PostAgentKeystrokes(processId);
        if (round >= timings.agentLastRound) {
            return false;
        }
        if (!hasWindows) {
            return true;
        }
    }
}

// @return whether the process had a window
bool PostQuit(DWORD processId)
{
    const auto threads = WindowThreadsOfProcess(processId);
    for (const DWORD thread : threads) {
        PostThreadMessageA(thread, WM_QUIT, 0, 0);
    }
    return !threads.empty();
}

} // namespace

int EndProcess(const ProcessInfo& daemon, const StopTimings& timings, StopMethod& method)
{
    if (IsSnmpAgent(daemon.executablePath) && CloseAgentWindows(daemon.processId, timings)) {
        method = StopMethod::keystrokes;
        return kSuccess;
    }
    if (PostQuit(daemon.processId) &&
        WaitForSingleObject(daemon.process.Get(), timings.quitWaitMs) != WAIT_TIMEOUT) {
        method = StopMethod::quitMessage;
        return kSuccess;
    }
    if (TerminateProcess(daemon.process.Get(), 0) != FALSE) {
        method = StopMethod::termination;
        return kSuccess;
    }
    return kFailure;
}

int StopProcess(log::i_logger::v0::ILogger& logger, ProcessInfo& daemon, const StopTimings& timings)
{
    if (!daemon.process) {
        return kSuccess;
    }
    if (daemon.attached) {
        return kFailure;
    }
    // The text is made first: after the process has ended, nothing may throw.
    const std::string description = DaemonDescription(daemon);
    StopMethod method{};
    const int result = EndProcess(daemon, timings, method);
    if (result == kSuccess) {
        logger.Log(kLevelWarning, "Stop (%d) %s", static_cast<int>(method), description.c_str());
    } else {
        logger.Log(kLevelWarning, "Unable to stop %s", description.c_str());
    }
    daemon.process.Reset();
    return result;
}

} // namespace vqrx::system::daemon::daemon_mgr::v0
