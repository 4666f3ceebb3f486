#pragma once

#include "DaemonListing.h"
#include "DaemonStatus.h"
#include "FormerChildren.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace vqrx::client::v0 {

/// A daemon of a former supervisor, and the plan for it. Texts are UTF-8.
struct FormerDaemon {
    /// How the running supervisor gets the daemon.
    enum class Plan {
        kAttach,   ///< the process still runs, and no supervisor supervises it: attach it
        kAlready,  ///< the running supervisor supervises it already
        kNeverRan, ///< it never had a process, so there is nothing to attach; note says so
        /// It runs, and the former supervisor or any other process may have started it. It is not
        /// attached: the supervisor would start its program again with the supervisor's rights.
        kUncertain,
        kLost ///< it cannot be attached; note says why
    };
    Plan plan = Plan::kLost;
    std::optional<std::uint32_t> id; ///< in the former supervisor; nothing: not known
    /// Nothing: the daemon had no process when that supervisor ended.
    std::optional<std::uint32_t> processId;
    std::optional<std::uint32_t> newId; ///< already: the id in the running supervisor
    std::int64_t createdMs = 0; ///< attach: when Windows created the process, ms since 1970, UTC
    std::string image;          ///< attach: full path of the program, from Windows
    std::string command;        ///< path and arguments, without the blank at the end
    bool service = false;       ///< the daemon is a Windows service
    bool uncertain = false;     ///< true: another program may have started it
    std::string note;           ///< neverRan, lost: the reason, for people
};

/// Plans what to attach to the running supervisor after an upgrade.
///
/// The plan holds the daemons that the last former supervisor had at its end. It also holds daemons
/// of earlier supervisors whose processes still run: a supervisor may have ended before anything
/// was attached to it. It leaves out daemons that a client stopped or detached. Of each process the
/// function checks that it is still the same one, not a later process with its id. A running
/// process is in the plan once, even if the former supervisor had two daemons for it. Asks only
/// `source` and `family` about the machine.
/// @param current  the run of the running supervisor; a reference into `timeline`
/// @param listed   processes from a listing made before the former supervisor ended; they are
///                 planned even if the log does not show them, and count more than the log
/// @param family   finds the processes of former supervisors that the log does not name; see
///                 FindFormerChildren(). Without its functions there are none
/// @return one plan for each daemon, in the order of the former ids; those without an id come last
[[nodiscard]] std::vector<FormerDaemon> PlanReattachment(const Timeline& timeline,
                                                         const SupervisorRun& current,
                                                         const std::vector<ListedProcess>& listed,
                                                         const ProcessSource& source,
                                                         const ProcessFamily& family = {});

/// Finds out whether a process is still the one that the plan was made for. Pure.
/// @param former  a daemon with the plan `attach`
/// @param facts   the process that has the planned process id now
/// @return `same` if time of creation and program are those of the plan; any other value says in
///         what the process differs
[[nodiscard]] ProcessFit FitPlan(const FormerDaemon& former, const ProcessFacts& facts);

} // namespace vqrx::client::v0
