#include "end_process/EndProcess.h"

#include "end_process/ProcessWindows.h"
#include "end_process/SnmpAgent.h"

namespace vqrx::system::end_process::v1 {
namespace {

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

bool EndProcess(const EndedProcess& ended, const StopTimings& timings, StopMethod& method)
{
    if (IsSnmpAgent(ended.executablePath) && CloseAgentWindows(ended.processId, timings)) {
        method = StopMethod::kKeystrokes;
        return true;
    }
    if (PostQuit(ended.processId) &&
        WaitForSingleObject(ended.process, timings.quitWaitMs) != WAIT_TIMEOUT) {
        method = StopMethod::kQuitMessage;
        return true;
    }
    if (TerminateProcess(ended.process, 0) != FALSE) {
        method = StopMethod::kTermination;
        return true;
    }
    return false;
}

} // namespace vqrx::system::end_process::v1
