#pragma once

#include "Timeline.h"

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace vqrx::client::v0 {

// Times are milliseconds since 1970, UTC. Durations are milliseconds.

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
    std::uint64_t restarts = 0;
    /// Share of its registered time in which it had a process, 0 to 1.
    std::optional<double> availability;
    std::optional<std::int64_t> longestMs;
    std::optional<std::int64_t> medianMs;      ///< of the processes that have ended
    std::map<std::string, std::uint64_t> ends; ///< how many processes ended, by reason
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
    std::int64_t endMs = 0;
    std::uint64_t records = 0;
    std::size_t runs = 0;          ///< of the supervisor
    std::vector<ReportLane> lanes; ///< by id; lanes without an id last
    std::vector<ReportGap> gaps;
    std::map<std::string, std::uint64_t> ends; ///< how many processes of all daemons, by reason
    std::uint64_t unknownEnds = 0; ///< of these: ends whose daemon the log does not show
};

/// Makes the model of the report from what the log shows. Pure.
/// @throws std::bad_alloc
[[nodiscard]] ReportModel MakeReportModel(const Timeline& timeline);

} // namespace vqrx::client::v0
