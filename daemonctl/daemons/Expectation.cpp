#include "Expectation.h"

#include "BatchCommand.h"
#include "ExitReason.h"

#include <algorithm>

namespace vqrx::client::v0 {
namespace {

struct Demand {
    std::int64_t nowMs;
    std::int64_t minUptimeMs;
};

bool IsUpLongEnough(const DaemonStatus& daemon, const Demand& demand)
{
    return daemon.state == RunState::kRunning &&
           demand.nowMs - daemon.process.createdMs >= demand.minUptimeMs;
}

std::string Seconds(std::int64_t durationMs)
{
    return std::to_string(durationMs / 1000) + " s";
}

std::string DescribeCrashLoop(const DaemonStatus& daemon)
{
    std::string text = " ends again and again: " + std::to_string(daemon.recent.lastHour) +
                       " restarts in the last hour";
    if (daemon.lastExit && !daemon.lastExit->reason.empty()) {
        text += ", last exit: " + ReadableReason(daemon.lastExit->reason);
    }
    return text;
}

std::string DescribeState(const DaemonStatus& daemon, const Demand& demand)
{
    const std::string name =
        daemon.id ? "daemon " + std::to_string(*daemon.id) : "a daemon of this program";
    switch (daemon.state) {
    case RunState::kRunning:
        return name + " has run for " + Seconds(demand.nowMs - daemon.process.createdMs) +
               ", which is less than " + Seconds(demand.minUptimeMs);
    case RunState::kRestarting:
        return name + DescribeCrashLoop(daemon);
    case RunState::kEnded:
        return name + " has ended";
    case RunState::kCannotStart:
        return name + " cannot be started";
    case RunState::kUnknown:
        break;
    }
    return name + " may not be asked about";
}

// Describes the first daemon that has the program's command and is not used for another program.
std::string ReasonOf(const ExpectedProgram& program, const std::vector<DaemonStatus>& daemons,
                     const std::vector<bool>& taken, const Demand& demand)
{
    for (std::size_t index = 0; index < daemons.size(); ++index) {
        if (!taken[index] && IsCommandOf(program, LaunchCommandOf(daemons[index]))) {
            return DescribeState(daemons[index], demand);
        }
    }
    return "no daemon runs it";
}

} // namespace

std::vector<ExpectationResult> CheckExpectations(const std::vector<ExpectedProgram>& programs,
                                                 const std::vector<DaemonStatus>& daemons,
                                                 std::int64_t nowMs, std::int64_t minUptimeMs)
{
    const Demand demand{nowMs, minUptimeMs};
    std::vector<std::string> commands;
    commands.reserve(daemons.size());
    for (const DaemonStatus& daemon : daemons) {
        commands.push_back(IsUpLongEnough(daemon, demand) ? LaunchCommandOf(daemon) : "");
    }
    const auto places = Assign(programs, commands);
    std::vector<bool> taken(daemons.size());
    for (const auto& place : places) {
        if (place) {
            taken[*place] = true;
        }
    }
    std::vector<ExpectationResult> results;
    for (std::size_t index = 0; index < programs.size(); ++index) {
        results.push_back({programs[index], places[index],
                           places[index] ? "" : ReasonOf(programs[index], daemons, taken, demand)});
    }
    return results;
}

} // namespace vqrx::client::v0
