#pragma once

#include "CrashLoop.h"
#include "ProcessMatch.h"
#include "Timeline.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vqrx::client::v0 {

/// A running process and its arguments.
struct RunningProgram {
    ProcessFacts facts;
    std::vector<std::string> arguments; ///< UTF-8, without the name of the program
};

/// The questions about this machine's processes, as functions that a test can replace. All texts
/// are UTF-8.
struct ProcessSource {
    /// Returns the present state of a process.
    std::function<ProcessFacts(std::uint32_t processId)> facts;
    SameFile sameFile;
    /// Returns the command line of a Windows service; empty for an unknown service.
    std::function<std::string(const std::string& service)> commandOfService;
    /// Returns the arguments of a process without its program; empty if they cannot be read.
    std::function<std::vector<std::string>(std::uint32_t processId)> arguments;
    std::string appFolder; ///< the supervisor's working folder; relative paths start there
};

/// Whether the process of a daemon runs at this moment.
enum class RunState {
    kRunning,    ///< the process that the log names runs
    kRestarting, ///< the daemon is in a crash loop (RecentRestarts), with or without a process
    /// That process has ended. The supervisor starts the next one, unless the exit code is 259.
    kEnded,
    kCannotStart, ///< the last start failed; the supervisor tries again every second
    kUnknown      ///< a process has this id, but this user may not examine it
};

/// The last end of a process of a daemon.
struct LastExit {
    std::int64_t timeMs = 0; ///< milliseconds since 1970, UTC
    std::string reason;      ///< in the words of the log; empty: the record is missing
    bool sure = true;        ///< false: records are missing; it may be the end of another daemon
};

/// A daemon of the running supervisor at this moment.
struct DaemonStatus {
    std::optional<std::uint32_t> id; ///< nothing: no record of the log shows the id
    RunState state = RunState::kUnknown;
    std::optional<std::uint32_t> processId; ///< of the process that runs or is unknown
    ProcessFacts process;                   ///< valid only if Runs()
    /// Restarts that the log still shows. A failed start is none.
    std::size_t restarts = 0;
    bool restartsComplete = true; ///< false: there may have been more restarts
    std::size_t failedStarts = 0; ///< failed starts that the log still shows
    RecentRestarts recent;
    /// When the process that the log names ended, milliseconds since 1970, UTC. Nothing if it runs,
    /// or if Windows does not show its end.
    std::optional<std::int64_t> endedMs;
    std::optional<LastExit> lastExit; ///< nothing: the log shows no end of a process
    bool attached = false;            ///< the daemon was attached, not launched
    bool service = false;             ///< the daemon is a Windows service
    bool inLog = true;   ///< false: a child process of the supervisor without a record in the log
    std::string command; ///< path and arguments with a blank after each, or the name of a service
    /// What speaks against starting its program on this machine, in words. Only if the daemon
    /// cannot be started and somebody looked.
    std::vector<std::string> obstacles;

    /// Returns whether a process of the daemon runs at this moment, and this user may examine it.
    [[nodiscard]] bool Runs() const noexcept
    {
        return processId.has_value() && state != RunState::kUnknown;
    }
};

/// A daemon whose starts fail counts as stopped this long after the last failure, milliseconds. The
/// supervisor tries every second, or later while it serves a call of a client.
inline constexpr std::int64_t kTriedLatelyMs = 15000;

/// Returns whether the supervisor still tries to start a daemon whose starts fail. It tries every
/// second and logs each failure, but logs nothing when a client stops such a daemon. So the daemon
/// counts as stopped kTriedLatelyMs after the last failure. A failure that lies further in the
/// future was logged before somebody set the clock back. Pure.
/// @param failedStarts  times of the failed starts in order, milliseconds since 1970, UTC
/// @param nowMs         the moment in question, milliseconds since 1970, UTC
[[nodiscard]] bool WasTriedLately(const std::vector<std::int64_t>& failedStarts,
                                  std::int64_t nowMs);

/// Returns whether the supervisor looks after a daemon, as far as the log shows. Pure.
/// @param nowMs  the current time, milliseconds since 1970, UTC; see WasTriedLately()
[[nodiscard]] bool IsLookedAfter(const DaemonHistory& daemon, std::int64_t nowMs);

/// Returns whether a daemon has no process, although the supervisor has had some passes to start it
/// again. It never starts a program again that ended with exit code 259. An end that lies some
/// seconds in the future was before somebody set the clock back. Pure.
/// @param nowMs  the current time, milliseconds since 1970, UTC
[[nodiscard]] bool IsLeftEnded(const DaemonStatus& daemon, std::int64_t nowMs);

/// Returns a daemon's last process as the log shows it. Asks `source` nothing but the command line
/// of a service.
/// @return nothing if the log shows no process, or shows that the process ended or that a client
///         stopped or detached it
[[nodiscard]] std::optional<LoggedProcess> LastProcessOf(const DaemonHistory& daemon,
                                                         const ProcessSource& source);

/// Finds the state of all daemons of the supervisor. Asks only `source` about the machine.
/// @param run       the run of the supervisor
/// @param nowMs     the current time, milliseconds since 1970, UTC; see WasTriedLately()
/// @param children  the running processes that the supervisor has started. The supervisor starts a
///                  process before it logs the start. So a child that the log does not show yet
///                  counts as the process of a daemon that has none, if program and arguments fit
/// @return first the daemons with an id, by id; then the commands that could never be started; then
///         the other children that the log does not show
[[nodiscard]] std::vector<DaemonStatus> StatusOfDaemons(const SupervisorRun& run,
                                                        const ProcessSource& source,
                                                        std::int64_t nowMs,
                                                        const std::vector<ProcessFacts>& children);

/// Returns the name of a state for people, in lower case: "cannot start".
[[nodiscard]] std::string_view NameOf(RunState state) noexcept;

} // namespace vqrx::client::v0
