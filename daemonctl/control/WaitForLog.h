#pragma once

#include "ThisMachine.h"
#include "Timeline.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

namespace vqrx::client::v0 {

/// The longest time, in milliseconds, that a record needs to reach the log after the call that it
/// is about. The supervisor writes records on a thread of its own.
inline constexpr std::uint64_t kLogPatienceMs = 10000;

/// Reads the log of this machine and makes its timeline, in which the last run is that of the
/// running supervisor. A supervisor that has just been started may not have written its first
/// records yet, and the log of one that was killed looks as if it still ran. So the function reads
/// the log until it shows the run of the supervisor's process (IsRunOf), at most kLogPatienceMs.
/// @param lastNumberBefore  see StartOfSupervisor; a caller that started the supervisor knows it
/// @throws LogUnreadable also if the log does not show the running supervisor by then
[[nodiscard]] Timeline
ReadTimelineOfRunning(std::optional<std::int64_t> lastNumberBefore = std::nullopt);

/// Finds the state of all daemons of the running supervisor, as ReadDaemons() does, but waits for
/// the first records of a supervisor that has just been started.
/// @param children          as ReadDaemons() gets them
/// @param lastNumberBefore  as ReadTimelineOfRunning() gets it
/// @throws as ReadTimelineOfRunning() and SourceOfThisMachine()
[[nodiscard]] DaemonsNow
ReadDaemonsOfRunning(const std::vector<ProcessFacts>& children,
                     std::optional<std::int64_t> lastNumberBefore = std::nullopt);

/// Reads the log of the running supervisor until it shows something.
/// The caller has just got an answer from that supervisor.
/// @param isShown  gets the run that goes on
/// @return false if isShown is still false after kLogPatienceMs
/// @throws LogUnreadable as ReadTimeline() and RunKnownToGoOn()
[[nodiscard]] bool WaitForLog(const std::function<bool(const SupervisorRun& run)>& isShown);

/// Waits until the log of the running supervisor shows a daemon, after its launch or attach.
/// @return false if the log does not show it after kLogPatienceMs
/// @throws LogUnreadable as WaitForLog()
[[nodiscard]] bool WaitForDaemonInLog(std::uint32_t daemonId);

/// As WaitForDaemonInLog(), but a log that cannot be read does not show the daemon.
[[nodiscard]] bool IsShownByLog(std::uint32_t daemonId);

} // namespace vqrx::client::v0
