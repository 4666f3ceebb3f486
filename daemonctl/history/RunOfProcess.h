#pragma once

#include "Timeline.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace vqrx::client::v0 {

/// A process that the running supervisor has started and that still runs.
struct RunningChild {
    std::uint32_t processId = 0;
    std::int64_t createdMs = 0; ///< milliseconds since 1970, UTC
};

/// What is known about the start of the running supervisor.
struct StartOfSupervisor {
    /// Creation of its process, milliseconds since 1970, UTC; 0: not known.
    std::int64_t createdMs = 0;
    /// The number of the last record that the log had before the process was started. Nothing: not
    /// known.
    std::optional<std::int64_t> lastNumberBefore;
    /// Processes whose parent is the supervisor's process; may be empty.
    std::vector<RunningChild> children;
};

/// Finds out whether the last run of a log is that of the running supervisor. The log of a
/// supervisor that was killed looks as if it still ran, and a supervisor that has just been started
/// may not have written its first records yet. Pure.
///
/// It is the run
/// - if its first record came after the last one before the start; the numbers show that whatever
///   the clock does; or
/// - if one of its records is not older than the process, with a second for clocks of different
///   resolution. It need not be the first one: between the creation of the process and its first
///   record the clock may be set back, for example at power-on, when the time is synchronised; or
/// - if it shows the start of one of the children. A supervisor whose daemons all run well writes
///   nothing, so after such a change of the clock no record of it may ever look new enough.
[[nodiscard]] bool IsRunOf(const SupervisorRun& run, const StartOfSupervisor& start) noexcept;

} // namespace vqrx::client::v0
