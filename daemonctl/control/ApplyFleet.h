#pragma once

#include "FleetPlan.h"
#include "Reporter.h"
#include "daemon_manager/SupervisorClient.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace vqrx::client::v0 {

/// How ApplyFleet() carries out a plan.
struct ApplyOptions {
    bool prune = false;  ///< stop the daemons that the fleet file does not name
    bool dryRun = false; ///< report what would be done, and do nothing
};

/// What ApplyFleet() did, in numbers of daemons. In a dry run: what it would do.
struct AppliedCount {
    std::size_t launched = 0;
    std::size_t attached = 0; ///< processes and services that are now attached
    std::size_t there = 0;    ///< registered already
    std::size_t stopped = 0;
    std::size_t failed = 0; ///< lines without a daemon now, and daemons that could not be stopped
    std::vector<std::size_t> failedLines; ///< numbers of the lines without a daemon now
    /// The daemon that was attached last and that the log does not show; nothing: it shows all.
    std::optional<std::uint32_t> unshownId;
};

/// Carries out the plan for a fleet file. Launches each program of the file that no daemon runs,
/// and attaches its process if one runs unwatched. On request, stops each daemon that the file does
/// not name. Reports one line for each line of the file and for each stopped daemon. If a line or a
/// stop fails, the function goes on with the others. After an attach the function waits until the
/// log shows the daemon: the next plan reads the log, and would attach the process a second time
/// without the record. If the supervisor ends, so does the function.
/// @param plan     without errors
/// @param daemons  the daemons that the plan was made for
/// @throws SupervisorNotRunning if the supervisor has ended; std::bad_alloc, if not while a line is
///         carried out: that is a failure of the line
[[nodiscard]] AppliedCount ApplyFleet(daemon_manager::SupervisorClient& supervisor,
                                      const FleetPlan& plan,
                                      const std::vector<DaemonStatus>& daemons,
                                      const ApplyOptions& options, const Reporter& reporter);

/// Reads a fleet file. @param path  UTF-8
/// @return the file; its errors hold the reason if it cannot be read
[[nodiscard]] ExpectFile ReadFleetFile(const std::string& path);

/// Sums a count up for people: "2 launched, 1 attached, 3 there already, 0 not". Pure.
[[nodiscard]] std::string DescribeCount(const AppliedCount& count, const ApplyOptions& options);

} // namespace vqrx::client::v0
