#pragma once

#include "DaemonListing.h"
#include "DaemonStatus.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace vqrx::client::v0 {

/// A process that a supervisor looked after before the running one began.
struct FormerDaemon {
    enum class Plan {
        attach,  ///< it is still that process, and nobody looks after it
        already, ///< the running supervisor looks after it
        lost,    ///< it cannot be attached; note says why
    };
    Plan plan = Plan::lost;
    std::optional<std::uint32_t> id;        ///< under the former supervisor
    std::optional<std::uint32_t> processId; ///< nothing: it did not run when that one ended
    std::optional<std::uint32_t> newId;     ///< already: under the running one
    std::int64_t createdMs = 0;             ///< attach: when the process began, as Windows tells
    std::string image;                      ///< attach: its program, as Windows tells
    std::string command;                    ///< without the blank behind it
    bool service = false;
    std::string note;
};

/// Finds what the supervisor before the running one has left behind, and makes sure of each process
/// that it is still the one meant. What earlier ones left counts as well when it still runs: the
/// supervisor before this one may have ended before anything was handed over to it. In the order of
/// the former ids. Pure but for source.
/// @param current  the run that goes on, one of the timeline's
/// @param listed   processes from a listing made before the former supervisor ended; they count
///                 also when the log no longer tells of them
std::vector<FormerDaemon> PlanReattachment(const Timeline& timeline, const SupervisorRun& current,
                                           const std::vector<ListedProcess>& listed,
                                           const ProcessSource& source);

/// Whether a process that was to be attached still is the one that the plan was made for. Pure.
/// @param facts  of the process that has its id now
ProcessFit FitPlan(const FormerDaemon& former, const ProcessFacts& facts);

} // namespace vqrx::client::v0
