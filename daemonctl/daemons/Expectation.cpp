#include "Expectation.h"

#include <algorithm>

namespace vqrx::client::v0 {
namespace {

bool IsUpLongEnough(const DaemonStatus& daemon, std::int64_t nowMs, std::int64_t minUptimeMs)
{
    return daemon.state == RunState::running && nowMs - daemon.process.createdMs >= minUptimeMs;
}

std::string DescribeState(const DaemonStatus& daemon)
{
    const std::string name =
        daemon.id ? "daemon " + std::to_string(*daemon.id) : "a daemon of this program";
    switch (daemon.state) {
    case RunState::running:
        return name + " has just been started";
    case RunState::ended:
        return name + " has ended";
    case RunState::cannotStart:
        return name + " cannot be started";
    case RunState::unknown:
        break;
    }
    return name + " may not be asked about";
}

// Describes the first daemon that has the program's command and is not used for another program.
std::string ReasonOf(const ExpectedProgram& program, const std::vector<DaemonStatus>& daemons,
                     const std::vector<bool>& taken)
{
    for (std::size_t index = 0; index < daemons.size(); ++index) {
        if (!taken[index] && IsCommandOf(program, daemons[index].command)) {
            return DescribeState(daemons[index]);
        }
    }
    return "no daemon runs it";
}

} // namespace

std::vector<ExpectationResult> CheckExpectations(const std::vector<ExpectedProgram>& programs,
                                                 const std::vector<DaemonStatus>& daemons,
                                                 std::int64_t nowMs, std::int64_t minUptimeMs)
{
    std::vector<std::string> commands;
    commands.reserve(daemons.size());
    for (const DaemonStatus& daemon : daemons) {
        commands.push_back(IsUpLongEnough(daemon, nowMs, minUptimeMs) ? daemon.command : "");
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
                           places[index] ? "" : ReasonOf(programs[index], daemons, taken)});
    }
    return results;
}

} // namespace vqrx::client::v0
