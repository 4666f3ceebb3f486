#pragma once

#include "ProcessMatch.h"
#include "Timeline.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vqrx::client::v0 {

/// What the processes of the machine are asked through; tests answer themselves.
struct ProcessSource {
    std::function<ProcessFacts(std::uint32_t processId)> facts;
    SameFile sameFile;
    /// The command line of a Windows service's program.
    std::function<std::string(const std::string& service)> commandOfService;
    /// What a process was started with, its program left out.
    std::function<std::vector<std::string>(std::uint32_t processId)> arguments;
    std::string appFolder; ///< the supervisor's working folder
};

enum class RunState {
    running,     ///< the process that the log names is there
    ended,       ///< it is not; the supervisor is about to start it again
    cannotStart, ///< starting it fails, and is tried every second
    unknown,     ///< there is a process of its id that may not be asked about
};

/// How a daemon's process ended last.
struct LastExit {
    std::int64_t timeMs = 0;
    std::string reason; ///< the exit code in the log's words; empty: its message is missing
    bool sure = true;   ///< false: messages are missing that could say otherwise
};

/// A daemon of the running supervisor at this moment.
struct DaemonStatus {
    std::optional<std::uint32_t> id; ///< nothing: no message in the log tells it
    RunState state = RunState::unknown;
    std::optional<std::uint32_t> processId; ///< of the process that runs
    ProcessFacts process;                   ///< meaningful when it runs
    std::size_t restarts = 0;               ///< that the log still shows
    bool restartsComplete = true;
    std::optional<LastExit> lastExit;
    bool attached = false;
    bool service = false;
    bool inLog = true;   ///< false: a child of the supervisor of which the log no longer tells
    std::string command; ///< as in the log, also of a process that is not in it
};

/// The run of the supervisor that goes on: the last one, but for those that were refused beside it
/// and have written into the log since. Null when it has ended, whatever came before it.
const SupervisorRun* RunThatGoesOn(const Timeline& timeline);

/// Whether what cannot be started was looked after at this moment: it is tried every second then,
/// and no line tells when a client has it stopped.
bool WasTriedLately(const std::vector<std::int64_t>& failedStarts, std::int64_t nowMs);

/// A daemon's last process as the log tells of it; nothing when it has none.
std::optional<LoggedProcess> LastProcessOf(const DaemonHistory& daemon,
                                           const ProcessSource& source);

/// All daemons that the supervisor looks after, by id; then those without one. Pure but for source.
/// @param nowMs     a daemon that cannot start is tried every second: one that was tried longer ago
///                  than a few seconds is no longer looked after
/// @param children  the processes that the supervisor has started and that run
std::vector<DaemonStatus> StatusOfDaemons(const SupervisorRun& run, const ProcessSource& source,
                                          std::int64_t nowMs,
                                          const std::vector<ProcessFacts>& children);

/// "exit code 3" for "Unknown (0x3)"; other reasons are in words as they are.
std::string ReadableReason(const std::string& reason);

std::string_view NameOf(RunState state) noexcept;

} // namespace vqrx::client::v0
