#include "FormerChildren.h"

#include <algorithm>
#include <map>
#include <utility>

namespace vqrx::client::v0 {
namespace {

// A former supervisor, as the parent of processes: each process of this parent that was created
// between the two times is its child.
struct FormerParent {
    std::int64_t sinceMs = 0; // it ran at this time
    std::int64_t untilMs = 0; // it had ended at this time
};

using FormerParents = std::map<std::uint32_t, FormerParent>; // by process id

class ParentFinder {
public:
    ParentFinder(std::int64_t untilMs,
                 const std::function<ProcessFacts(std::uint32_t processId)>& facts)
        : untilMs_(untilMs)
        , facts_(facts)
    {
    }

    // Adds a process that has started daemons, unless it still runs.
    // @param startMs  a time at which it started a daemon
    // @param sinceMs  a time at which it ran, not after startMs
    void Add(std::uint32_t parentId, std::int64_t startMs, std::int64_t sinceMs)
    {
        const ProcessFacts holder = facts_(parentId);
        const bool isGone = holder.state == ProcessFacts::State::kGone;
        const bool isSuccessor =
            holder.state == ProcessFacts::State::kRunning && holder.createdMs > startMs;
        if (!isGone && !isSuccessor) {
            return;
        }
        const std::int64_t untilMs = isGone ? untilMs_ : std::min(untilMs_, holder.createdMs);
        const auto [entry, isNew] = parents_.try_emplace(parentId, FormerParent{sinceMs, untilMs});
        entry->second.sinceMs = std::min(entry->second.sinceMs, sinceMs);
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

std::vector<RunningProgram>
FindFormerChildren(const std::vector<StartedProcess>& started, const Timeline& timeline,
                   const SupervisorRun& current,
                   const std::function<ProcessFacts(std::uint32_t processId)>& facts,
                   const ProcessFamily& family)
{
    ParentFinder finder(current.startedMs.value_or(current.firstMs), facts);
    for (const FormerSupervisor& supervisor : family.supervisors) {
        finder.Add(supervisor.processId, supervisor.createdMs, supervisor.createdMs);
    }
    for (const StartedProcess& process : started) {
        if (const auto parent = family.parentOf(process.facts.processId)) {
            finder.Add(*parent, process.facts.createdMs,
                       std::min(process.sinceMs, process.facts.createdMs));
        }
    }
    std::vector<RunningProgram> children;
    for (const auto& [parentId, parent] : finder.Parents()) {
        for (RunningProgram& child : family.childrenOf(parentId)) {
            if (child.facts.createdMs >= parent.sinceMs && child.facts.createdMs < parent.untilMs &&
                !IsNamed(timeline, child.facts)) {
                children.push_back(std::move(child));
            }
        }
    }
    return children;
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
