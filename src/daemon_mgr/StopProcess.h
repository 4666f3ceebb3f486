#pragma once

#include "ILogger.h"
#include "ProcessInfo.h"

#include <windows.h>

#include <cstdint>

namespace vqrx::system::daemon::daemon_mgr::v0 {

/// The patience of a stop. Tests shorten it; the program never does.
struct StopTimings {
    DWORD quitWaitMs = 30000;          ///< for a process that was asked to quit
    DWORD agentRoundMs = 1000;         ///< between two requests to the SNMP agent
    std::uint32_t agentLastRound = 31; ///< rounds count from 0: so the agent has 32
};

/// How a process was brought to its end; the number shows in the log.
enum class StopMethod : std::uint32_t {
    keystrokes = 0,  ///< the SNMP agent closed its windows when it was asked to
    quitMessage = 1, ///< it quit when it was asked to
    termination = 2,
};

/// Asks the process of a record to end, and ends it when it does not. Blocks for up to 62 seconds.
/// The record keeps its handle.
/// @return 0 when the process was brought to its end, with the method set; 1 when it refused
/// @throws std::bad_alloc; the process has at most been asked to end by then
int EndProcess(const ProcessInfo& record, const StopTimings& timings, StopMethod& method);

/// Ends the process of a record that is no longer in the table, logs the outcome and closes the
/// process handle. A record without a process counts as done; an attached process is never ended.
/// @return 0 for success, 1 for failure
/// @throws std::bad_alloc; the process has at most been asked to end by then
int StopProcess(log::i_logger::v0::ILogger& logger, ProcessInfo& record,
                const StopTimings& timings);

} // namespace vqrx::system::daemon::daemon_mgr::v0
