#pragma once

#include "ILogger.h"
#include "ProcessInfo.h"
#include "end_process/EndProcess.h"

namespace vqrx::system::daemon::daemon_mgr::v0 {

using end_process::v1::StopTimings;

/// Ends the process of a launched daemon that is no longer in the table, logs the outcome at level
/// warning and closes the process handle. For a daemon without a process, and for an attached one,
/// it does none of this. Before the call, DaemonManager::StopDaemon takes the daemon out of
/// the table, so that no pass starts the program again, and removes the firewall rule of the
/// program. Blocks as long as EndProcess, without any lock.
/// @return kSuccess, also for a daemon without a process; kFailure if the process could not be
///         ended, and for an attached daemon that has a process: it is never ended
/// @throws std::bad_alloc; until then the process has at most been asked to end
[[nodiscard]] int StopProcess(log::i_logger::v0::ILogger& logger, ProcessInfo& daemon,
                              const StopTimings& timings);

} // namespace vqrx::system::daemon::daemon_mgr::v0
