#pragma once

#include "CrashLoop.h"
#include "DaemonStatus.h"
#include "Timeline.h"

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace vqrx::client::v0 {

// Times are milliseconds since 1970, UTC. Durations are milliseconds.

/// Whether the supervisor of the log runs at the moment of the report.
enum class SupervisorState {
    kUnknown, ///< the log is a copy, or nobody asked
    kRunning,
    kNotRunning,
    kNotAnswering ///< the supervisor runs, and does not answer: it hangs
};

/// What the log does not show: the moment of the report, the state of the supervisor at that
/// moment, and why the log cannot be read.
struct ReportMoment {
    SupervisorState supervisor = SupervisorState::kUnknown;
    std::int64_t nowMs = 0;      ///< 0: not known; then the report ends at the last record
    std::string logFailure = {}; ///< why the log cannot be read; empty: the report shows the log
    /// The daemons as `ps` shows them; nothing: the report shows the state that the log shows.
    std::optional<std::vector<DaemonStatus>> daemons = {};
    std::string logDamage = {}; ///< what of the log cannot be read; empty: all of it can be read
    /// false: a supervisor runs, and the log shows an earlier one at most.
    bool showsRunning = true;
};

/// The interval of one process as the report draws it.
struct ReportInterval {
    std::int64_t beginMs = 0;
    std::int64_t endMs = 0;   ///< the end of the run if the process ran on
    ProcessInterval interval; ///< what the log shows of it
};

/// The history of one daemon in all runs of the supervisor. Each run counts daemon ids from 0, so
/// the command identifies the daemon. If a run has two daemons of one command, each has a lane.
struct ReportLane {
    std::string command;         ///< without the trailing blank
    std::set<std::uint32_t> ids; ///< the ids it had; none if it never had a process
    std::vector<ReportInterval> intervals;
    std::vector<std::int64_t> failedStarts; ///< times
    std::string state;                      ///< in the last run that had the daemon, in words
    std::vector<std::string> obstacles;     ///< as DaemonStatus::obstacles
    std::uint64_t restarts = 0;
    /// The supervisor watches it at the moment of the report, or did at the last record.
    bool isRegistered = false;
    RecentRestarts recent; ///< before the moment of the report, or before the last record
    /// Share of its registered time in which it had a process, 0 to 1. A process that ended within
    /// about one pass of the supervisor counts as none: most of that time passed after its end,
    /// until the next pass found it.
    std::optional<double> availability;
    std::optional<std::int64_t> longestMs;
    std::optional<std::int64_t> medianMs;      ///< of the processes that have ended
    std::map<std::string, std::uint64_t> ends; ///< how many processes ended, by reason

    /// Returns the last process that ended by itself; null if there is none.
    [[nodiscard]] const ReportInterval* LastExit() const noexcept;
};

/// An interval for which the log is incomplete.
struct ReportGap {
    std::int64_t beginMs = 0;
    std::int64_t endMs = 0;
    std::string text; ///< the cause, in words
};

/// Everything that the report shows.
struct ReportModel {
    std::int64_t beginMs = 0;
    std::int64_t endMs = 0; ///< of the last record; now if the supervisor runs
    ReportMoment moment;
    std::uint64_t records = 0;
    std::size_t runs = 0;          ///< of the supervisor
    std::vector<ReportLane> lanes; ///< by id; lanes without an id last
    std::vector<ReportGap> gaps;
    std::map<std::string, std::uint64_t> ends; ///< how many processes of all daemons, by reason
    std::uint64_t unknownEnds = 0; ///< of these: ends whose daemon the log does not show
};

/// Makes the model of the report from what the log shows. If the supervisor runs, its daemons are
/// as `moment` shows them, else as the last record shows them, up to now. Pure.
/// @throws std::bad_alloc
[[nodiscard]] ReportModel MakeReportModel(const Timeline& timeline,
                                          const ReportMoment& moment = {});

} // namespace vqrx::client::v0
