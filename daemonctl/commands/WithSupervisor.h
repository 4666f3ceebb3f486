#pragma once

#include "Commands.h"
#include "DaemonStatus.h"
#include "ReportModel.h"
#include "daemon_manager/SupervisorClient.h"

#include <functional>
#include <vector>

namespace vqrx::client::v0 {

/// Asks the supervisor whether it is there, for at most ten seconds, then connects to it and runs
/// an operation. If the supervisor hangs, the operation does not run. The calls of the operation
/// have no limit of their own. Prints a failure on standard error.
/// @return the exit code of the operation; kRefused if the supervisor hangs; after a failure
///         kNoSupervisor, kRefused, or kWrongUsage for an argument that the client library refuses
[[nodiscard]] int
WithSupervisor(const std::function<int(daemon_manager::SupervisorClient&)>& operation);

/// Connects to the supervisor and runs an operation that also reads the supervisor's log. A failure
/// is printed on standard error.
/// @return as WithSupervisor(); kLogUnreadable if the log cannot be read, or the registry does not
///         name the firmware root
[[nodiscard]] int
WithSupervisorAndLog(const std::function<int(daemon_manager::SupervisorClient&)>& operation);

/// Asks the supervisor whether it is there, for at most ten seconds, then runs an operation that
/// reads the supervisor's log and calls no supervisor. A supervisor that hangs does not keep the
/// operation from running; a message on standard error says that it hangs. Prints a failure on
/// standard error.
/// @return the exit code of the operation, but kRefused instead of kDone if the supervisor hangs;
///         kNoSupervisor, kRefused or kLogUnreadable after a failure
[[nodiscard]] int BesideSupervisor(const std::function<int()>& operation);

/// Prints the notes on a listing (ListingNotes) on standard error.
void PrintNotes(const std::vector<DaemonStatus>& daemons, const SupervisorRun& run);

/// Returns whether the supervisor of this machine is published and answers within five seconds.
/// @throws std::system_error if Windows starts no thread
[[nodiscard]] bool IsSupervisorThere();

/// Returns whether the supervisor of this machine keeps programs running: it answers within five
/// seconds, or this user cannot call it and its process runs.
/// @throws ProcessListUnreadable; std::system_error if Windows starts no thread
[[nodiscard]] bool IsSupervisorAtWork();

/// Finds out whether the supervisor of this machine runs.
/// @return kNotRunning only if none is published and no process can be the supervisor
///         (FindSupervisors); kNotAnswering if one is published and does not answer within five
///         seconds; kUnknown if a supervisor may run, but cannot be called or is not to be trusted
/// @throws std::system_error if Windows starts no thread
[[nodiscard]] SupervisorState StateOfSupervisor();

/// Looks at the child processes of this machine's supervisor.
/// @return a function that finds its daemons, as `ps` shows them, in a log that is read afterwards
/// @throws ProcessListUnreadable; the function throws as DaemonsIn() does
[[nodiscard]] DaemonsOfLog LookAtThisMachine();

} // namespace vqrx::client::v0
