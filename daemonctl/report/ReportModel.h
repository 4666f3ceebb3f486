#pragma once

#include "Timeline.h"

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace vqrx::client::v0 {

// Times are milliseconds since 1970, UTC; durations are milliseconds.

/// Part of a lane: one process, as long as it was supervised.
struct ReportLife {
    std::int64_t beginMs = 0;
    std::int64_t endMs = 0; ///< of the run or the log, where the process went on
    Life life;
};

/// What one daemon did in all runs of the supervisor. Ids count anew in each run, so a daemon is
/// known again by its command.
struct ReportLane {
    std::string command;         ///< without the trailing blank
    std::set<std::uint32_t> ids; ///< that it had; none when it never had a process
    std::vector<ReportLife> lives;
    std::vector<std::int64_t> failedStarts;
    std::string state; ///< in the last run that knew it, in words
    std::uint64_t restarts = 0;
    std::optional<double> availability; ///< 0 to 1; of the time for which it was registered
    std::optional<std::int64_t> longestMs;
    std::optional<std::int64_t> medianMs;      ///< of the lives that have ended
    std::map<std::string, std::uint64_t> ends; ///< by reason
};

/// A time of which the log does not tell everything.
struct ReportGap {
    std::int64_t beginMs = 0;
    std::int64_t endMs = 0;
    std::string text;
};

/// All that the report shows.
struct ReportModel {
    std::int64_t beginMs = 0;
    std::int64_t endMs = 0;
    std::uint64_t records = 0;
    std::size_t runs = 0;
    std::vector<ReportLane> lanes; ///< by id
    std::vector<ReportGap> gaps;
    std::map<std::string, std::uint64_t> ends; ///< of all daemons, by reason
    std::uint64_t unknownEnds = 0; ///< among them: of daemons that the log does not tell
};

ReportModel MakeReportModel(const Timeline& timeline);

} // namespace vqrx::client::v0
