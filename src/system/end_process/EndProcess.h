#pragma once

#include <windows.h>

#include <cstdint>
#include <string>

namespace vqrx::system::end_process::v1 {

/// How long the end of a process is waited for. Only tests change the defaults.
struct StopTimings {
    DWORD quitWaitMs = 30000;          ///< milliseconds from WM_QUIT to termination
    DWORD agentRoundMs = 1000;         ///< milliseconds between two requests to the SNMP agent
    std::uint32_t agentLastRound = 31; ///< the rounds have the numbers 0 to 31
};

/// How a process was ended. The log shows the number.
enum class StopMethod : std::uint32_t {
    kKeystrokes = 0,  ///< the SNMP agent closed its windows after keystrokes
    kQuitMessage = 1, ///< the process ended after WM_QUIT
    kTermination = 2, ///< TerminateProcess
};

/// A process to end.
struct EndedProcess {
    const std::string& executablePath; ///< decides whether the process is the SNMP agent
    DWORD processId = 0;
    HANDLE process = nullptr; ///< borrowed; for SYNCHRONIZE and PROCESS_TERMINATE
};

/// Ends a process. Tries in this order:
/// 1. SNMP agent: sends keystrokes each round. As soon as the agent has no window, returns success;
///    its process may still run. So an agent that has no window from the start gets no keystroke
///    and is not ended. After the last round the next steps follow.
/// 2. A process with windows: sends WM_QUIT to the thread of each window and waits at most
///    quitWaitMs.
/// 3. TerminateProcess, with exit code 0. It may return before the process is gone.
/// Blocks for at most 62 seconds with the default timings.
/// @param method  set to the step that succeeded; unchanged on failure
/// @return false if TerminateProcess was refused: the thread's last error is its reason
/// @throws std::bad_alloc; until then the process has at most been asked to end
[[nodiscard]] bool EndProcess(const EndedProcess& ended, const StopTimings& timings,
                              StopMethod& method);

} // namespace vqrx::system::end_process::v1
