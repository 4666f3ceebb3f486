#pragma once

#include "ExpectFile.h"
#include "Reattachment.h"
#include "Reporter.h"
#include "daemon_manager/SupervisorClient.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace vqrx::client::v0 {

/// How HandOver() finds the daemons of the former supervisors, and what it does with them.
struct HandOverOptions {
    std::vector<ListedProcess> listed; ///< see PlanReattachment()
    /// Lines of a fleet file: a line that names a service gives its arguments for a restart, which
    /// the log does not show.
    std::vector<ExpectedProgram> fleet;
    /// Former supervisors whose processes the caller knows. Their daemons are found even if the log
    /// names none of them.
    std::vector<FormerSupervisor> formerSupervisors;
    /// UTF-8 path of a log whose records come before those of the present log; empty: none
    std::string formerLog;
    /// May change the plan before it is carried out; empty: nobody looks at it.
    std::function<void(std::vector<FormerDaemon>&)> review;
    /// See StartOfSupervisor; nothing: the caller did not start the supervisor.
    std::optional<std::int64_t> lastNumberBefore;
    bool dryRun = false; ///< report what would be done, and do nothing
};

/// What HandOver() did, in numbers of daemons. In a dry run: what it would do.
struct HandOverCount {
    std::size_t attached = 0;
    std::size_t already = 0;  ///< the running supervisor supervises them already
    std::size_t neverRan = 0; ///< they never had a process
    std::size_t lost = 0;     ///< they could not be attached, or are uncertain
    /// Of the lost ones: the processes that the supervisor refused. A later try may succeed.
    std::vector<std::uint32_t> refused;
    bool formerRunSeen = false; ///< the logs show a run before the present one
    /// The daemon that was attached last, if the log does not show it: a second hand-over would
    /// attach its process again. Nothing: the log shows all.
    std::optional<std::uint32_t> unshownId;
};

/// Attaches the daemons of former supervisors to the running one, which must be the only supervisor
/// that runs. Ends and starts no process. Reports one line for each daemon. If a daemon cannot be
/// attached, goes on with the others. Holds the HandOverLock, except in a dry run.
/// @throws SupervisorNotRunning if the supervisor has ended; SupervisorError; LogUnreadable;
///         std::bad_alloc; std::runtime_error if another program does not release the lock
[[nodiscard]] HandOverCount HandOver(daemon_manager::SupervisorClient& supervisor,
                                     const HandOverOptions& options, const Reporter& reporter);

/// Counts the programs of former supervisors that run on, and that HandOver() would attach. Cheap
/// if the log shows no former run with daemons; else asks Windows about each of its last processes.
/// @param timeline  of the log
/// @param current   the run of the running supervisor; a reference into `timeline`
/// @return 0 while a former supervisor still ends, because it still watches them
/// @throws std::bad_alloc; ProcessListUnreadable
[[nodiscard]] std::size_t CountUnwatched(const Timeline& timeline, const SupervisorRun& current);

/// Reports what runs on from former supervisors while no supervisor runs.
/// @return what a hand-over to the next supervisor would do
/// @throws LogUnreadable; std::bad_alloc
[[nodiscard]] HandOverCount ReportUnwatched(const Reporter& reporter);

/// Sums a count up for people: "2 attached, 1 already, 0 not". Pure.
[[nodiscard]] std::string DescribeCount(const HandOverCount& count, bool dryRun);

} // namespace vqrx::client::v0
