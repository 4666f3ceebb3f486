#pragma once

#include "ILogger.h"
#include "ProcessInfo.h"

#include <windows.h>

#include <cstdint>

namespace vqrx::system::daemon::daemon_mgr::v0 {

/// How long a stop waits for the process to end by itself. Only tests change the defaults.
struct StopTimings {
    DWORD quitWaitMs = 30000;          ///< milliseconds from WM_QUIT to termination
    DWORD agentRoundMs = 1000;         ///< milliseconds between two requests to the SNMP agent
    std::uint32_t agentLastRound = 31; ///< the rounds have the numbers 0 to 31
};

/// How a process was ended. The log shows the number.
enum class StopMethod : std::uint32_t {
    keystrokes = 0,  ///< the SNMP agent closed its windows after keystrokes
    quitMessage = 1, ///< the process ended after WM_QUIT
    termination = 2, ///< TerminateProcess
};

/// Ends the process of a daemon. Tries in this order:
/// 1. SNMP agent: sends keystrokes each round. As soon as the agent has no window, returns success;
///    its process may still run. An agent that never had a window gets no keystroke.
/// 2. A process with windows: sends WM_QUIT to the thread of each window and waits at most
///    quitWaitMs.
/// 3. TerminateProcess, with exit code 0. It may return before the process is gone.
/// Blocks for at most 62 seconds with the default timings. The daemon keeps its handle.
/// @param daemon  must have a process handle
/// @param method  set to the step that succeeded; unchanged on failure
/// @return kSuccess, or kFailure if TerminateProcess was refused
/// @throws std::bad_alloc; until then the process has at most been asked to end
[[nodiscard]] int EndProcess(const ProcessInfo& daemon, const StopTimings& timings,
                             StopMethod& method);

/// Ends the process of a launched daemon that is no longer in the table, logs the outcome at level
/// warning and closes the process handle. For a daemon without a process, and for an attached one, it
/// does none of this. Before the call, DaemonManager::StopDaemon takes the daemon out of
/// the table, so that no pass starts the program again, and removes the firewall rule of the program.
/// Blocks as long as EndProcess, without any lock.
/// @return kSuccess, also for a daemon without a process; kFailure if the process could not be
///         ended, and for an attached daemon that has a process: it is never ended
/// @throws std::bad_alloc; until then the process has at most been asked to end
[[nodiscard]] int StopProcess(log::i_logger::v0::ILogger& logger, ProcessInfo& daemon,
                              const StopTimings& timings);

} // namespace vqrx::system::daemon::daemon_mgr::v0
