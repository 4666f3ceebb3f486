#pragma once

#include "DaemonStatus.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace vqrx::client::v0 {

/// A supervisor that has ended.
struct FormerSupervisor {
    std::uint32_t processId = 0;
    std::int64_t createdMs = 0; ///< when Windows created it, milliseconds since 1970, UTC
    std::int64_t endedMs = 0;   ///< when it ended, as Windows shows; milliseconds since 1970, UTC
};

/// The questions about parents and children among the processes of this machine, as functions that
/// a test can replace; and what the caller knows about former supervisors.
struct ProcessFamily {
    /// Returns the id of the process that has started a process; nothing if no process has this id.
    std::function<std::optional<std::uint32_t>(std::uint32_t processId)> parentOf;
    /// Returns the running processes that a process with this id has started, except console hosts.
    std::function<std::vector<RunningProgram>(std::uint32_t parentId)> childrenOf;
    std::vector<FormerSupervisor> supervisors; ///< may be empty
};

/// A process that a former supervisor has started, as the log shows.
struct StartedProcess {
    ProcessFacts facts;
    /// A time at which that supervisor ran, milliseconds since 1970, UTC. The earlier this time is,
    /// the more of the supervisor's other children are found.
    std::int64_t sinceMs = 0;
    /// The last time at which that supervisor certainly ran, milliseconds since 1970, UTC.
    std::int64_t ranAtMs = 0;
};

/// A process that the log does not name, and whose parent has the id of a former supervisor.
struct FormerChild {
    RunningProgram program;
    /// Whether the former supervisor certainly ran when the process was created. If not, another
    /// process that got the supervisor's id later may have started this one.
    bool certain = false;
};

/// Finds the processes that former supervisors have started and that the log does not name. A
/// supervisor that is killed may have started a process without a record in the log, and the ring
/// may have overwritten the record of an old start.
///
/// Such a process has the same parent as the former supervisor's daemons, and this parent has
/// ended. Windows gives ids again, so a process is certainly a child only if it was created while
/// the former supervisor certainly ran. Returns a process that was created later, but before the
/// running supervisor, as an uncertain one: any user may have started it. Asks only `facts` and
/// `family` about the machine.
/// @param started   the processes of daemons that still run, without attached ones: these have
///                  another parent
/// @param timeline  of the log; a process that it names is left out
/// @param current   the run of the running supervisor; a reference into `timeline`
/// @param facts     returns the present state of a process
[[nodiscard]] std::vector<FormerChild>
FindFormerChildren(const std::vector<StartedProcess>& started, const Timeline& timeline,
                   const SupervisorRun& current,
                   const std::function<ProcessFacts(std::uint32_t processId)>& facts,
                   const ProcessFamily& family);

/// Writes the path and the arguments of a process, with a blank between them, as a command. Pure.
[[nodiscard]] std::string CommandOf(const RunningProgram& program);

} // namespace vqrx::client::v0
