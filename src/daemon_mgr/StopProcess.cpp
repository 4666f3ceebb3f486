#include "StopProcess.h"

#include "ProcessWindows.h"
#include "SnmpAgent.h"

namespace vqrx::system::daemon::daemon_mgr::v0 {
namespace {

constexpr int kSuccess = 0;
constexpr int kFailure = 1;

// The keystrokes on which the SNMP agent quits. @return whether there was a window to send them to
bool PostAgentKeystrokes(DWORD processId)
{
    const auto windows = WindowsOfProcess(processId);
    for (const HWND window : windows) {
        PostMessageA(window, WM_CHAR, 'X', 0);
        PostMessageA(window, WM_CHAR, 'Q', 0);
    }
    return !windows.empty();
}

// @return whether the agent has closed its windows. In the last round it is too late for that: the
// general steps follow even when the windows have just gone.
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

// @return whether there was a thread to ask
bool PostQuit(DWORD processId)
{
    const auto threads = WindowThreadsOfProcess(processId);
    for (const DWORD thread : threads) {
        PostThreadMessageA(thread, WM_QUIT, 0, 0);
    }
    return !threads.empty();
}

} // namespace

int EndProcess(const ProcessInfo& record, const StopTimings& timings, StopMethod& method)
{
    if (IsSnmpAgent(record.executablePath) && CloseAgentWindows(record.processId, timings)) {
        method = StopMethod::keystrokes;
        return kSuccess;
    }
    if (PostQuit(record.processId) &&
        WaitForSingleObject(record.process.Get(), timings.quitWaitMs) != WAIT_TIMEOUT) {
        method = StopMethod::quitMessage;
        return kSuccess;
    }
    if (TerminateProcess(record.process.Get(), 0) != FALSE) {
        method = StopMethod::termination;
        return kSuccess;
    }
    return kFailure;
}

int StopProcess(log::i_logger::v0::ILogger& logger, ProcessInfo& record, const StopTimings& timings)
{
    if (!record.process) {
        return kSuccess;
    }
    if (record.attached) {
        return kFailure;
    }
    // Made first: once the process has been ended, nothing may fail for want of memory.
    const std::string description = DaemonDescription(record);
    StopMethod method{};
    const int result = EndProcess(record, timings, method);
    if (result == kSuccess) {
        logger.Log(1, "Stop (%d) %s", static_cast<int>(method), description.c_str());
    } else {
        logger.Log(1, "Unable to stop %s", description.c_str());
    }
    record.process.Reset();
    return result;
}

} // namespace vqrx::system::daemon::daemon_mgr::v0
