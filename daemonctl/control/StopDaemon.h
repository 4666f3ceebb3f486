#pragma once

#include "DaemonStatus.h"
#include "Reporter.h"
#include "daemon_manager/SupervisorClient.h"

#include <string>

namespace vqrx::client::v0 {

/// What becomes of the process of an attached daemon that is stopped.
enum class AttachedProcess {
    /// It is ended, in the steps in which the supervisor ends the process of a launched daemon.
    kEnd,
    kLeave ///< it runs on
};

/// Stops a daemon: the supervisor no longer starts it.
///
/// The supervisor itself ends the process of a launched daemon. It never ends the process of an
/// attached daemon, and it would remove such a daemon without a record in the log. So this function
/// detaches an attached daemon, which the supervisor logs, and then ends the process itself.
/// The steps after a detach take at most about 80 seconds. A call of the supervisor has no limit.
/// @param daemon    of the running supervisor. If inLog is false, it is not known whether it is
///                  attached: the function then finds out by the answer to a detach
/// @param reporter  gets one line about the result, and before it a line about a wait
/// @return true: the supervisor no longer knows the daemon, and the process is gone, or runs on as
///         kLeave asks.
///         false: the daemon is unknown, has no known id, or its process may not be ended
///         (WhyNotToEnd); then nothing was changed. Or the supervisor removed the daemon, but its
///         process runs on, or nobody knows which process it has
/// @throws SupervisorNotRunning, SupervisorError; ProcessListUnreadable; std::bad_alloc
[[nodiscard]] bool StopDaemon(daemon_manager::SupervisorClient& supervisor,
                              const DaemonStatus& daemon, AttachedProcess attached,
                              const Reporter& reporter);

/// Finds out why daemonctl must not end the process of a daemon:
/// - It is that of a Windows service. If it ended by force, Windows would report a crash, and could
///   start the service beside the supervisor.
/// - This process has the full rights of an administrator, others may change the log, and only the
///   log says that the process is the daemon's: the supervisor has not started it.
/// @return the reason with advice, one line; empty if the process may be ended. The program of
///         a service that the supervisor itself started may be ended
[[nodiscard]] std::string WhyNotToEnd(const DaemonStatus& daemon);

/// Describes a daemon for people: "daemon 3, process 592 (C:\FW\App\a.exe -x)".
[[nodiscard]] std::string NameOfDaemon(const DaemonStatus& daemon);

} // namespace vqrx::client::v0
