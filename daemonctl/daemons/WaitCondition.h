#pragma once

#include "DaemonStatus.h"

#include <cstdint>
#include <functional>
#include <optional>

namespace vqrx::client::v0 {

/// Identifies a run of the supervisor between two readings of the growing log. The fields are those
/// of SupervisorRun.
struct RunMark {
    std::optional<std::int64_t> startedMs;
    bool beginningSeen = false;
    std::optional<std::int64_t> firstNumber;
    std::optional<std::int64_t> lastNumber;
};

/// Returns the mark of a run, for a later IsSameRun. Pure.
[[nodiscard]] RunMark MarkOf(const SupervisorRun& run);

/// Returns whether two marks are of the same run. The log is a ring, so newer records may have
/// overwritten the start of the run between the two readings. Pure.
/// @param before  mark of the unended run at an earlier reading
/// @param now     mark of the unended run at a later reading
[[nodiscard]] bool IsSameRun(const RunMark& before, const RunMark& now);

/// The state of one daemon at one moment. Two observations are equal if they show the same process.
struct Observation {
    bool known = false;   ///< the log shows the daemon
    bool running = false; ///< the daemon has a process, and the supervisor supervises it
    /// The daemon's process runs, but no longer supervised: a client detached the daemon, or tried
    /// to stop it and failed.
    bool letGo = false;
    std::optional<std::uint32_t> processId; ///< of the process if running or letGo
    std::int64_t startedMs = 0; ///< when the log shows its start, milliseconds since 1970, UTC
    std::int64_t createdMs = 0; ///< when Windows created it, milliseconds since 1970, UTC

    bool operator==(const Observation&) const = default;
};

/// The event that `daemonctl wait` waits for.
enum class WaitFor {
    kRunning,  ///< the daemon has a process
    kEnded,    ///< the first process has ended, or the daemon had none and has none
    kRestarted ///< a process other than the first one runs
};

/// Observes a daemon in the log and among the processes. Asks only `source` about the machine.
[[nodiscard]] Observation Observe(const SupervisorRun& run, std::uint32_t daemonId,
                                  const ProcessSource& source);

/// Returns whether the awaited event has come. Pure except for `facts`.
/// @param first  the first observation in which the daemon is known
/// @param now    the latest observation
/// @param facts  asks Windows about the process of `first`. The log is not enough: it shows the end
///               of that process later, and never after a detach
[[nodiscard]] bool IsFulfilled(WaitFor what, const Observation& first, const Observation& now,
                               const std::function<ProcessFacts(std::uint32_t processId)>& facts);

} // namespace vqrx::client::v0
