#pragma once

#include "DaemonStatus.h"

#include <cstdint>
#include <functional>
#include <optional>

namespace vqrx::client::v0 {

/// What tells one run of the supervisor from another while the log goes on.
struct RunMark {
    std::optional<std::int64_t> startedMs; ///< see SupervisorRun
    bool beginningSeen = false;
    std::optional<std::int64_t> lastNumber;
};

RunMark MarkOf(const SupervisorRun& run);

/// Whether the run that goes on is the one that went on at the last look. The records of its start
/// may be gone by now: the log is a ring.
bool IsSameRun(const RunMark& before, const RunMark& now);

/// What is seen of one daemon at one moment.
struct Observation {
    bool known = false; ///< the log tells of it
    bool running = false;
    bool letGo = false;                     ///< it is none any more, but its process runs on
    std::optional<std::uint32_t> processId; ///< of the process that runs, also when let go
    std::int64_t startedMs = 0;             ///< together with the id: which process it is
    std::int64_t createdMs = 0;             ///< the same, as Windows tells it

    bool operator==(const Observation&) const = default;
};

enum class WaitFor { running, ended, restarted };

/// Looks for a daemon in the run that goes on.
Observation Observe(const SupervisorRun& run, std::uint32_t daemonId, const ProcessSource& source);

/// Whether what is waited for has come.
/// @param first  the first observation in which the daemon is known
/// @param facts  asked for the first process: only itself tells whether it has ended
bool IsFulfilled(WaitFor what, const Observation& first, const Observation& now,
                 const std::function<ProcessFacts(std::uint32_t processId)>& facts);

} // namespace vqrx::client::v0
