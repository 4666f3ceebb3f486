#pragma once

#include "DaemonStatus.h"
#include "ProcessMatch.h"
#include "Timeline.h"

#include <cstdint>
#include <map>
#include <optional>

namespace vqrx::client::v0 {

/// A process that ran on when its supervisor ended, as the log shows it.
struct LeftProcess {
    const DaemonHistory* daemon = nullptr; ///< points into the timeline
    LoggedProcess logged;
    bool byLastRun = false; ///< the last former supervisor with daemons left it
    /// When the supervisor of the process started, ms since 1970, UTC; nothing: the log does not
    /// show it.
    std::optional<std::int64_t> supervisorSinceMs;
    /// When that supervisor wrote its last record about a daemon, ms since 1970, UTC.
    std::int64_t supervisorRanAtMs = 0;
};

using LeftProcesses = std::map<std::uint32_t, LeftProcess>; ///< by process id

/// Returns the last run before the current one that had daemons; null if there is none.
/// @param current  a reference into `timeline`
[[nodiscard]] const SupervisorRun* LastFormerRun(const Timeline& timeline,
                                                 const SupervisorRun& current);

/// Finds the processes that former supervisors still supervised when they ended. Leaves out each
/// process of which a later record shows that it ended, or that a client stopped or detached it.
/// Does not look whether the processes still run.
/// @param current  the run of the running supervisor; a reference into `timeline`
[[nodiscard]] LeftProcesses FindLeftProcesses(const Timeline& timeline,
                                              const SupervisorRun& current,
                                              const ProcessSource& source);

} // namespace vqrx::client::v0
