#include "Reattachment.h"

#include "LeftProcesses.h"

#include <algorithm>
#include <set>
#include <utility>

namespace vqrx::client::v0 {
namespace {

// A former daemon, and whether its process is still the same.
struct Candidate {
    FormerDaemon daemon;
    ProcessFit fit = ProcessFit::kGone;
    ProcessFacts facts;
};

// Compares a process with the time of creation and the program that Windows reported earlier.
ProcessFit FitKnown(std::int64_t createdMs, const std::string& image, const ProcessFacts& facts)
{
    if (facts.state != ProcessFacts::State::kRunning) {
        return facts.state == ProcessFacts::State::kGone ? ProcessFit::kGone : ProcessFit::kHidden;
    }
    if (facts.createdMs != createdMs) {
        return ProcessFit::kOtherTime;
    }
    return facts.image == image ? ProcessFit::kSame : ProcessFit::kOtherProgram;
}

// Returns whether the listed process ended while the last former supervisor still ran. Then the log
// is newer than the listing, and shows what became of the daemon.
bool IsOutdated(const ListedProcess& listed, const SupervisorRun& last)
{
    const DaemonHistory* const daemon = listed.id ? last.Find(*listed.id) : nullptr;
    if (daemon == nullptr || WithoutBlank(daemon->command) != listed.command) {
        return false;
    }
    const auto interval = std::find_if(
        daemon->intervals.rbegin(), daemon->intervals.rend(),
        [&listed](const ProcessInterval& each) { return each.processId == listed.processId; });
    return interval != daemon->intervals.rend() &&
           (interval->end == IntervalEnd::kEnded || interval->end == IntervalEnd::kLost ||
            interval->end == IntervalEnd::kStopped);
}

class Planner {
public:
    Planner(const SupervisorRun& current, const ProcessSource& source)
        : current_(current)
        , source_(source)
    {
    }

    void AddFromLog(const LeftProcess& left)
    {
        const ProcessFacts facts = source_.facts(left.logged.processId);
        const ProcessFit fit = Fit(left.logged, facts);
        if (WasLetGo(left.logged.processId) || (fit != ProcessFit::kSame && !left.byLastRun)) {
            return;
        }
        if (fit == ProcessFit::kSame && !left.logged.attached) {
            started_.push_back(
                {facts, left.supervisorSinceMs.value_or(facts.createdMs), left.supervisorRanAtMs});
        }
        FormerDaemon former = Describe(*left.daemon);
        former.processId = left.logged.processId;
        Add({std::move(former), fit, facts});
    }

    // @param last  the run of the last former supervisor; null if the log does not show it
    void AddFromListing(const ListedProcess& listed, const SupervisorRun* last)
    {
        if (WasLetGo(listed.processId)) {
            return;
        }
        const ProcessFacts facts = source_.facts(listed.processId);
        const ProcessFit fit = FitKnown(listed.createdMs, listed.image, facts);
        if (fit != ProcessFit::kSame && last != nullptr && IsOutdated(listed, *last)) {
            return;
        }
        FormerDaemon former;
        former.id = listed.id;
        former.processId = listed.processId;
        former.command = listed.command;
        former.service = listed.service;
        Add({std::move(former), fit, facts});
    }

    // Adds a daemon that had no process when its supervisor ended.
    void AddNotRunning(const DaemonHistory& daemon)
    {
        FormerDaemon former = Describe(daemon);
        former.note = "it had no process when its supervisor ended";
        Add({std::move(former), ProcessFit::kGone, {}});
    }

    // Adds a command that could never be started. No record shows the id of such a daemon.
    void AddNeverStarted(const std::string& command)
    {
        if (current_.neverStarted.count(command) != 0) {
            return; // a client launched it again, and the running supervisor tries to start it
        }
        DaemonHistory daemon;
        daemon.command = command;
        FormerDaemon former = Describe(daemon);
        former.id = std::nullopt;
        former.plan = FormerDaemon::Plan::kNeverRan;
        former.note = "its supervisor could never start it";
        Add({std::move(former), ProcessFit::kGone, {}});
    }

    // Adds the processes that former supervisors have started and that the log does not name.
    void AddUnnamed(const Timeline& timeline, const ProcessFamily& family)
    {
        for (const FormerChild& child :
             FindFormerChildren(started_, timeline, current_, source_.facts, family)) {
            const ProcessFacts& facts = child.program.facts;
            FormerDaemon former;
            former.processId = facts.processId;
            former.command = CommandOf(child.program);
            former.uncertain = !child.certain;
            Add({std::move(former), ProcessFit::kSame, facts});
        }
    }

    std::vector<FormerDaemon> Plan()
    {
        std::stable_sort(candidates_.begin(), candidates_.end(),
                         [](const Candidate& a, const Candidate& b) {
                             constexpr std::uint32_t none = 0xFFFFFFFF;
                             return a.daemon.id.value_or(none) < b.daemon.id.value_or(none);
                         });
        // First match the daemons whose process still runs, by that process. Then match the rest
        // by command with the daemons that are left.
        for (Candidate& candidate : candidates_) {
            if (candidate.fit == ProcessFit::kSame) {
                candidate.daemon.plan = candidate.daemon.uncertain ? FormerDaemon::Plan::kUncertain
                                                                   : FormerDaemon::Plan::kAttach;
                candidate.daemon.createdMs = candidate.facts.createdMs;
                candidate.daemon.image = candidate.facts.image;
                FindAmongCurrent(candidate, [&](const DaemonHistory& daemon) {
                    return HasProcess(daemon, candidate.facts);
                });
            }
        }
        for (Candidate& candidate : candidates_) {
            if (candidate.fit != ProcessFit::kSame) {
                if (candidate.daemon.processId) {
                    candidate.daemon.note = DescribeMisfit(candidate.fit, candidate.facts);
                }
                FindAmongCurrent(candidate, [&](const DaemonHistory& daemon) {
                    return WithoutBlank(daemon.command) == candidate.daemon.command;
                });
            }
        }
        std::vector<FormerDaemon> plan;
        for (Candidate& candidate : candidates_) {
            plan.push_back(std::move(candidate.daemon));
        }
        return plan;
    }

private:
    // Adds a candidate, unless an earlier candidate has the same running process. A supervisor with
    // two daemons for one process would start the program twice when the process ends.
    void Add(Candidate candidate)
    {
        if (candidate.fit == ProcessFit::kSame &&
            !running_.insert(candidate.daemon.processId.value_or(0)).second) {
            return;
        }
        candidates_.push_back(std::move(candidate));
    }

    static FormerDaemon Describe(const DaemonHistory& daemon)
    {
        FormerDaemon former;
        former.id = daemon.id;
        former.command = WithoutBlank(daemon.command);
        former.service = daemon.IsService();
        return former;
    }

    ProcessFit Fit(const LoggedProcess& logged, const ProcessFacts& facts) const
    {
        return FitProcess(logged, facts, source_.appFolder, source_.sameFile);
    }

    // The running supervisor holds a handle of each process that it has, so no other process gets
    // the id. Times do not decide: the clock may have been set back before the attach.
    bool HasProcess(const DaemonHistory& daemon, const ProcessFacts& facts) const
    {
        const auto logged = LastProcessOf(daemon, source_);
        return logged && logged->processId == facts.processId;
    }

    // Returns whether the running supervisor had the process, and a client stopped or detached it.
    bool WasLetGo(std::uint32_t processId) const
    {
        return std::any_of(current_.daemons.begin(), current_.daemons.end(),
                           [processId](const auto& entry) {
                               const DaemonHistory& daemon = entry.second;
                               return !daemon.IsRegistered() && !daemon.intervals.empty() &&
                                      daemon.intervals.back().processId == processId;
                           });
    }

    // Marks a candidate as attached already if the running supervisor has a daemon that fits.
    template <typename Predicate>
    void FindAmongCurrent(Candidate& candidate, const Predicate& isTheOne)
    {
        for (const auto& [id, daemon] : current_.daemons) {
            if (daemon.IsRegistered() && taken_.count(id) == 0 && isTheOne(daemon)) {
                taken_.insert(id);
                candidate.daemon.plan = FormerDaemon::Plan::kAlready;
                candidate.daemon.newId = id;
                candidate.daemon.note.clear();
                return;
            }
        }
    }

    const SupervisorRun& current_;
    const ProcessSource& source_;
    std::vector<Candidate> candidates_;
    std::set<std::uint32_t> running_; // the processes of the candidates whose process still runs
    std::vector<StartedProcess> started_;
    std::set<std::uint32_t> taken_; // ids in the current run that are matched with a candidate
};

} // namespace

std::vector<FormerDaemon> PlanReattachment(const Timeline& timeline, const SupervisorRun& current,
                                           const std::vector<ListedProcess>& listed,
                                           const ProcessSource& source, const ProcessFamily& family)
{
    Planner planner(current, source);
    const SupervisorRun* const last = LastFormerRun(timeline, current);
    LeftProcesses left = FindLeftProcesses(timeline, current, source);
    for (const ListedProcess& process : listed) {
        left.erase(process.processId); // the listing is more certain than the log
        planner.AddFromListing(process, last);
    }
    for (const auto& [processId, process] : left) {
        planner.AddFromLog(process);
    }
    if (family.parentOf && family.childrenOf) {
        planner.AddUnnamed(timeline, family);
    }
    if (last != nullptr) {
        for (const auto& [id, daemon] : last->daemons) {
            if (daemon.IsRegistered() && !LastProcessOf(daemon, source)) {
                planner.AddNotRunning(daemon);
            }
        }
        for (const auto& [command, failedStarts] : last->neverStarted) {
            if (WasTriedLately(failedStarts, last->lastMs)) {
                planner.AddNeverStarted(command);
            }
        }
    }
    return planner.Plan();
}

ProcessFit FitPlan(const FormerDaemon& former, const ProcessFacts& facts)
{
    return FitKnown(former.createdMs, former.image, facts);
}

} // namespace vqrx::client::v0
