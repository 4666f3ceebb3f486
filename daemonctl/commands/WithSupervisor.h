#pragma once

#include "DaemonStatus.h"
#include "ReportModel.h"
#include "daemon_manager/SupervisorClient.h"

#include <functional>
#include <vector>

namespace vqrx::client::v0 {

/// Connects to the supervisor and runs an operation. A failure is printed on standard error.
/// @return the exit code of the operation; kNoSupervisor or kRefused after a failure
[[nodiscard]] int
WithSupervisor(const std::function<int(daemon_manager::SupervisorClient&)>& operation);

/// Connects to the supervisor and runs an operation that also reads the supervisor's log. A failure
/// is printed on standard error.
/// @return the exit code of the operation; kNoSupervisor, kRefused or kLogUnreadable after a
///         failure
[[nodiscard]] int
WithSupervisorAndLog(const std::function<int(daemon_manager::SupervisorClient&)>& operation);

/// Prints the notes on a listing (ListingNotes) on standard error.
void PrintNotes(const std::vector<DaemonStatus>& daemons, const SupervisorRun& run);

/// Returns whether the supervisor of this machine is published and can be called.
[[nodiscard]] bool IsSupervisorThere();

/// Finds out whether the supervisor of this machine runs.
/// @return notRunning only if none is published and no process runs a file named DaemonManager.exe;
/// unknown if a supervisor may run, but does not answer this user or is not to be trusted
[[nodiscard]] SupervisorState StateOfSupervisor();

} // namespace vqrx::client::v0
