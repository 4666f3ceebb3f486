#include "DaemonStatus.h"

#include <algorithm>
#include <cstdlib>
#include <set>

namespace vqrx::client::v0 {
namespace {

// A pass comes every second. It comes later while the supervisor serves a call of a client.
constexpr std::int64_t kSomePassesMs = 5000;

// Writes the command line of a service as the log writes a command: without quotes, and with a
// blank at the end.
std::string AsCommand(std::string commandLine)
{
    std::erase(commandLine, '"');
    return commandLine + " ";
}

bool IsUnended(const ProcessInterval& interval)
{
    return interval.end == IntervalEnd::kRunning || interval.end == IntervalEnd::kSupervisorGone;
}

std::optional<LastExit> LastExitOf(const DaemonHistory& daemon)
{
    const auto ended = [](const ProcessInterval& interval) {
        return interval.end == IntervalEnd::kEnded || interval.end == IntervalEnd::kLost;
    };
    const auto found = std::find_if(daemon.intervals.rbegin(), daemon.intervals.rend(), ended);
    if (found == daemon.intervals.rend()) {
        return std::nullopt;
    }
    return LastExit{found->endMs.value_or(found->startMs), found->reason,
                    found->attribution != Attribution::kLikely};
}

RunState StateOf(ProcessFit fit)
{
    if (fit == ProcessFit::kSame) {
        return RunState::kRunning;
    }
    return fit == ProcessFit::kHidden ? RunState::kUnknown : RunState::kEnded;
}

DaemonStatus StatusOf(const DaemonHistory& daemon, const ProcessSource& source, std::int64_t nowMs)
{
    DaemonStatus status;
    status.id = daemon.id;
    status.restarts = daemon.Restarts();
    status.restartsComplete = daemon.beginningSeen;
    status.failedStarts = daemon.failedStarts.size();
    status.recent = RestartsBefore(daemon, nowMs);
    status.lastExit = LastExitOf(daemon);
    status.attached = daemon.attached;
    status.service = daemon.IsService();
    status.command = daemon.command;
    if (daemon.state == DaemonState::kCannotStart) {
        status.state = RunState::kCannotStart;
        return status;
    }
    status.state = RunState::kEnded;
    if (const std::optional<LoggedProcess> logged = LastProcessOf(daemon, source)) {
        status.process = source.facts(logged->processId);
        status.state =
            StateOf(FitProcess(*logged, status.process, source.appFolder, source.sameFile));
        if (status.state != RunState::kEnded) {
            status.processId = logged->processId;
        }
        status.endedMs = status.process.endedMs;
    }
    if (status.state != RunState::kUnknown && status.recent.IsCrashLoop()) {
        status.state = RunState::kRestarting;
    }
    return status;
}

DaemonStatus StatusOfNeverStarted(const std::string& command, std::size_t failedStarts)
{
    DaemonStatus status;
    status.state = RunState::kCannotStart;
    status.failedStarts = failedStarts;
    status.command = command;
    return status;
}

// Writes the arguments of a process as the log writes them: with a blank after each.
std::string ArgumentsText(const ProcessFacts& process, const ProcessSource& source)
{
    std::string text;
    for (const std::string& argument : source.arguments(process.processId)) {
        text += argument + " ";
    }
    return text;
}

// Gives a child to a daemon that was started so recently that the log does not show the start yet.
// @return false if there is no such daemon
bool GiveToItsDaemon(const ProcessFacts& child, const ProcessSource& source,
                     std::vector<DaemonStatus>& daemons)
{
    const std::string arguments = " " + ArgumentsText(child, source);
    const auto isItsDaemon = [&](const DaemonStatus& daemon) {
        return (daemon.state == RunState::kEnded || daemon.state == RunState::kRestarting) &&
               !daemon.processId && daemon.command.ends_with(arguments) &&
               IsImageOfCommand(child.image, daemon.command, source.appFolder, source.sameFile);
    };
    const auto found = std::find_if(daemons.begin(), daemons.end(), isItsDaemon);
    if (found == daemons.end()) {
        return false;
    }
    found->processId = child.processId;
    found->process = child;
    found->endedMs.reset();
    found->state = found->state == RunState::kEnded ? RunState::kRunning : found->state;
    return true;
}

// Returns whether a child that was seen before has not ended meanwhile. The arguments of a child
// that has ended cannot be read, so it fits no daemon. A child whose program nobody can tell ends
// just now or, under Wine, has just been made: then the log shows it a moment later.
bool StillRuns(const ProcessFacts& child, const ProcessSource& source)
{
    if (child.image.empty()) {
        return false;
    }
    const ProcessFacts now = source.facts(child.processId);
    return now.state != ProcessFacts::State::kGone && now.createdMs == child.createdMs;
}

DaemonStatus StatusOfChild(const ProcessFacts& child, const ProcessSource& source)
{
    DaemonStatus status;
    status.state = RunState::kRunning;
    status.processId = child.processId;
    status.process = child;
    status.restartsComplete = false;
    status.inLog = false;
    status.command = child.image + " " + ArgumentsText(child, source);
    return status;
}

} // namespace

bool WasTriedLately(const std::vector<std::int64_t>& failedStarts, std::int64_t nowMs)
{
    return !failedStarts.empty() && std::abs(nowMs - failedStarts.back()) <= kTriedLatelyMs;
}

bool IsLookedAfter(const DaemonHistory& daemon, std::int64_t nowMs)
{
    return daemon.IsRegistered() && (daemon.state != DaemonState::kCannotStart ||
                                     WasTriedLately(daemon.failedStarts, nowMs));
}

bool IsLeftEnded(const DaemonStatus& daemon, std::int64_t nowMs)
{
    return daemon.state == RunState::kEnded && daemon.endedMs &&
           std::abs(nowMs - *daemon.endedMs) > kSomePassesMs;
}

std::optional<LoggedProcess> LastProcessOf(const DaemonHistory& daemon, const ProcessSource& source)
{
    if (daemon.intervals.empty() || !IsUnended(daemon.intervals.back()) ||
        !daemon.intervals.back().processId) {
        return std::nullopt;
    }
    const ProcessInterval& interval = daemon.intervals.back();
    LoggedProcess logged;
    logged.processId = *interval.processId;
    logged.loggedMs = interval.startMs;
    logged.latestMs = interval.latestMs;
    logged.attached = interval.attached;
    logged.command =
        daemon.IsService() ? AsCommand(source.commandOfService(daemon.command)) : daemon.command;
    return logged;
}

std::vector<DaemonStatus> StatusOfDaemons(const SupervisorRun& run, const ProcessSource& source,
                                          std::int64_t nowMs,
                                          const std::vector<ProcessFacts>& children)
{
    std::vector<DaemonStatus> result;
    std::set<std::uint32_t> inLog;
    for (const auto& [id, daemon] : run.daemons) {
        for (const ProcessInterval& interval : daemon.intervals) {
            inLog.insert(interval.processId.value_or(0));
        }
        if (IsLookedAfter(daemon, nowMs)) {
            result.push_back(StatusOf(daemon, source, nowMs));
        }
    }
    for (const auto& [command, failedStarts] : run.neverStarted) {
        if (WasTriedLately(failedStarts, nowMs)) {
            result.push_back(StatusOfNeverStarted(command, failedStarts.size()));
        }
    }
    for (const ProcessFacts& child : children) {
        if (inLog.count(child.processId) == 0 && !GiveToItsDaemon(child, source, result) &&
            StillRuns(child, source)) {
            result.push_back(StatusOfChild(child, source));
        }
    }
    return result;
}

std::string_view NameOf(RunState state) noexcept
{
    switch (state) {
    case RunState::kRunning:
        return "running";
    case RunState::kRestarting:
        return "restarting";
    case RunState::kEnded:
        return "ended";
    case RunState::kCannotStart:
        return "cannot start";
    case RunState::kUnknown:
        break;
    }
    return "unknown";
}

} // namespace vqrx::client::v0
