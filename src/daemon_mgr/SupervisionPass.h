#pragma once

#include "DaemonTable.h"
#include "ILogger.h"

namespace vqrx::system::daemon::daemon_mgr::v0 {

/// Checks every daemon once, in the order of the ids, and starts the program of each daemon that
/// has no running process.
///
/// Only this function decides whether a daemon's process has ended and its program is started
/// again. (A stop waits for the process by itself; daemonctl decides by the process handle.) It
/// decides by the exit code:
/// - 259 (STILL_ACTIVE): the process runs. A process that ended with exit code 259 therefore counts
///   as running for ever: it is neither reported nor started again.
/// - Any other code: the process has ended. Its exit code is logged, then the program is started.
/// - If the exit code cannot be read, the process counts as ended with exit code 0xFFFFFFFF.
/// If a program cannot be started, each pass tries again, without limit. The caller decides how far
/// passes are apart: kCheckInterval (app/ProgramBody.cpp), 1 s in the supervisor.
///
/// The caller holds the table lock during the whole pass, process creation included. If the work on
/// one daemon throws, the exception is logged and the pass goes on with the next daemon.
void SupervisionPass(DaemonTable& table, log::i_logger::v0::ILogger& logger);

} // namespace vqrx::system::daemon::daemon_mgr::v0
