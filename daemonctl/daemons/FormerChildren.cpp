#include "FormerChildren.h"

#include <algorithm>
#include <map>
#include <utility>

namespace vqrx::client::v0 {
namespace {

// A period in which a former supervisor ran, as the parent of processes.
struct FormerParent {
    std::int64_t sinceMs = 0; // it ran at this time
    std::int64_t ranAtMs = 0; // it certainly ran until this time
    std::int64_t untilMs = 0; // it had ended at this time
};

using FormerParents = std::map<std::uint32_t, std::vector<FormerParent>>; // by process id

class ParentFinder {
public:
    ParentFinder(std::int64_t untilMs,
                 const std::function<ProcessFacts(std::uint32_t processId)>& facts)
        : untilMs_(untilMs)
        , facts_(facts)
    {
    }

    // Adds a period of a process that has started daemons, unless the process still runs.
    // @param startMs  a time at which it started a daemon
    // @param sinceMs  a time at which it ran, not after startMs
    // @param ranAtMs  the last time at which it certainly ran
    void Add(std::uint32_t parentId, std::int64_t startMs, std::int64_t sinceMs,
             std::int64_t ranAtMs)
    {
        const ProcessFacts holder = facts_(parentId);
        const bool isGone = holder.state == ProcessFacts::State::kGone;
        const bool isSuccessor =
            holder.state == ProcessFacts::State::kRunning && holder.createdMs > startMs;
        if (isGone || isSuccessor) {
            const std::int64_t untilMs = isGone ? untilMs_ : std::min(untilMs_, holder.createdMs);
            parents_[parentId].push_back({sinceMs, ranAtMs, untilMs});
        }
    }

    const FormerParents& Parents() const { return parents_; }

private:
    std::int64_t untilMs_;
    const std::function<ProcessFacts(std::uint32_t processId)>& facts_;
    FormerParents parents_;
};

// Returns whether a record of the log names this process. A record from before its creation names
// an earlier process with its id.
bool IsNamed(const Timeline& timeline, const ProcessFacts& process)
{
    constexpr std::int64_t clockGrainMs = 1000;
    const auto isIt = [&](const ProcessInterval& interval) {
        return interval.processId == process.processId &&
               interval.startMs + clockGrainMs >= process.createdMs;
    };
    for (const SupervisorRun& run : timeline.runs) {
        for (const auto& [id, daemon] : run.daemons) {
            if (std::any_of(daemon.intervals.begin(), daemon.intervals.end(), isIt)) {
                return true;
            }
        }
    }
    return false;
}

} // namespace

std::vector<FormerChild>
FindFormerChildren(const std::vector<StartedProcess>& started, const Timeline& timeline,
                   const SupervisorRun& current,
                   const std::function<ProcessFacts(std::uint32_t processId)>& facts,
                   const ProcessFamily& family)
{
    ParentFinder finder(current.startedMs.value_or(current.firstMs), facts);
    for (const FormerSupervisor& supervisor : family.supervisors) {
        finder.Add(supervisor.processId, supervisor.createdMs, supervisor.createdMs,
                   supervisor.endedMs);
    }
    for (const StartedProcess& process : started) {
        if (const auto parent = family.parentOf(process.facts.processId)) {
            const std::int64_t createdMs = process.facts.createdMs;
            finder.Add(*parent, createdMs, std::min(process.sinceMs, createdMs),
                       std::max(process.ranAtMs, createdMs));
        }
    }
    std::vector<FormerChild> found;
    for (const auto& [parentId, periods] : finder.Parents()) {
        for (RunningProgram& child : family.childrenOf(parentId)) {
            const std::int64_t createdMs = child.facts.createdMs;
            const auto isPossible = [createdMs](const FormerParent& period) {
                return createdMs >= period.sinceMs && createdMs < period.untilMs;
            };
            const auto isCertain = [&](const FormerParent& period) {
                return isPossible(period) && createdMs <= period.ranAtMs;
            };
            if (std::any_of(periods.begin(), periods.end(), isPossible) &&
                !IsNamed(timeline, child.facts)) {
                const bool certain = std::any_of(periods.begin(), periods.end(), isCertain);
                found.push_back({std::move(child), certain});
            }
        }
    }
    return found;
}

std::string CommandOf(const RunningProgram& program)
{
    std::string command = program.facts.image;
    for (const std::string& argument : program.arguments) {
        command += " " + argument;
    }
    return command;
}

} // namespace vqrx::client::v0
