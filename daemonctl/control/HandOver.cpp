#include "HandOver.h"

#include "HandOverLock.h"
#include "HeldProcess.h"
#include "InstalledPaths.h"
#include "LeftProcesses.h"
#include "LetterCase.h"
#include "Printable.h"
#include "ProcessList.h"
#include "SupervisorProcesses.h"
#include "ThisMachine.h"
#include "TimeText.h"
#include "Utf8.h"
#include "WaitForLog.h"

#include <algorithm>
#include <optional>

namespace vqrx::client::v0 {
namespace {

using daemon_manager::SupervisorClient;
using HandOverPlan = FormerDaemon::Plan;

std::string NameOfFormer(const FormerDaemon& former)
{
    std::string name = former.id ? "daemon " + std::to_string(*former.id) : "a former daemon";
    if (former.processId) {
        name += ", process " + std::to_string(*former.processId);
    }
    return name + " (" + Printable(former.command) + "): ";
}

ProcessFamily FamilyOfThisMachine(const std::vector<FormerSupervisor>& supervisors)
{
    return {ParentOfProcess,
            [](std::uint32_t parentId) {
                std::vector<RunningProgram> children;
                for (ProcessFacts& child : RunningChildren(parentId)) {
                    std::vector<std::string> arguments = ArgumentsOfProcess(child.processId);
                    children.push_back({std::move(child), std::move(arguments)});
                }
                return children;
            },
            supervisors};
}

// Carries out a plan, daemon by daemon.
class Handing {
public:
    Handing(SupervisorClient* supervisor, const HandOverOptions& options, const Reporter& reporter)
        : supervisor_(supervisor)
        , options_(options)
        , reporter_(reporter)
    {
    }

    void Carry(const FormerDaemon& former)
    {
        switch (former.plan) {
        case HandOverPlan::kAlready:
            ++count_.already;
            reporter_.done(NameOfFormer(former) + "is daemon " + std::to_string(*former.newId) +
                           " already");
            return;
        case HandOverPlan::kNeverRan:
            ++count_.neverRan;
            reporter_.done(NameOfFormer(former) + former.note);
            return;
        case HandOverPlan::kUncertain:
            ReportUncertain(former);
            return;
        case HandOverPlan::kLost:
            ReportLost(former, former.note);
            return;
        case HandOverPlan::kAttach:
            break;
        }
        if (supervisor_ == nullptr || options_.dryRun) {
            ++count_.attached;
            reporter_.done(NameOfFormer(former) +
                           (supervisor_ == nullptr ? "runs unwatched" : "would be attached"));
        } else {
            AttachFormer(former);
        }
    }

    // The record of an attach reaches the log a moment after the call. The next hand-over reads the
    // log, and would attach a process a second time without the record. The log shows the daemons
    // in the order of the calls.
    void WaitForTheirRecords()
    {
        if (lastNewId_ && !IsShownByLog(*lastNewId_)) {
            count_.unshownId = lastNewId_;
            reporter_.failed("the log does not show all of them yet: do not repeat this command "
                             "until daemonctl ps shows them");
        }
    }

    HandOverCount Count() const { return count_; }

private:
    void ReportLost(const FormerDaemon& former, const std::string& why)
    {
        ++count_.lost;
        reporter_.failed(NameOfFormer(former) + Printable(why) +
                         "\n  To run the program again: daemonctl launch ...");
    }

    void ReportUncertain(const FormerDaemon& former)
    {
        ++count_.lost;
        reporter_.failed(NameOfFormer(former) +
                         "not attached: nobody knows whether the former supervisor started it\n"
                         "  If it is one of its programs: daemonctl attach " +
                         std::to_string(*former.processId));
    }

    // The supervisor receives only a process id, and the plan may be old: another process can have
    // the id by now. So this function holds the process open, which reserves its id, and checks it
    // again.
    void AttachFormer(const FormerDaemon& former)
    {
        const HeldProcess process(*former.processId);
        const ProcessFacts facts = process.Facts();
        const ProcessFit fit = FitPlan(former, facts);
        if (fit != ProcessFit::kSame) {
            ReportLost(former, DescribeMisfit(fit, facts));
            return;
        }
        const std::optional<std::vector<std::string>> arguments = FleetArguments(former);
        const daemon_manager::DaemonRequest answer = supervisor_->Attach(
            *former.processId, Wide(arguments.value_or(std::vector<std::string>())));
        if (!answer.done) {
            ++count_.lost;
            count_.refused.push_back(*former.processId);
            reporter_.failed(NameOfFormer(former) +
                             "the supervisor could not attach it; to find the reason: daemonctl "
                             "doctor");
            return;
        }
        ++count_.attached;
        const std::string newId = std::to_string(answer.daemonId);
        reporter_.done(NameOfFormer(former) + "attached as daemon " + newId);
        if (former.service && !arguments) {
            reporter_.done("  a service; its arguments for a restart are not known. To give them: "
                           "daemonctl detach " +
                           newId + ", daemonctl attach " + std::to_string(*former.processId) +
                           " ARG...");
        }
        lastNewId_ = answer.daemonId;
    }

    // Returns the arguments of a service; nothing if the fleet file does not name it.
    std::optional<std::vector<std::string>> FleetArguments(const FormerDaemon& former) const
    {
        const auto line = std::find_if(options_.fleet.begin(), options_.fleet.end(),
                                       [&](const ExpectedProgram& program) {
                                           return former.service && WithoutCase(program.program) ==
                                                                        WithoutCase(former.command);
                                       });
        return line != options_.fleet.end() ? std::optional(line->arguments) : std::nullopt;
    }

    SupervisorClient* supervisor_; // null: none runs
    const HandOverOptions& options_;
    const Reporter& reporter_;
    HandOverCount count_;
    std::optional<std::uint32_t> lastNewId_; // of the daemon that was attached last
};

} // namespace

HandOverCount HandOver(SupervisorClient& supervisor, const HandOverOptions& options,
                       const Reporter& reporter)
{
    std::optional<HandOverLock> lock;
    if (!options.dryRun) {
        lock.emplace(HandOverLockPath(), reporter, kHandOverPatienceMs);
    }
    Timeline timeline = ReadTimelineOfRunning(options.lastNumberBefore);
    if (!options.formerLog.empty()) {
        timeline = ReadTimelineAfter(options.formerLog);
    }
    Handing handing(&supervisor, options, reporter);
    auto plan =
        PlanReattachment(timeline, RunKnownToGoOn(timeline), options.listed, SourceOfThisMachine(),
                         FamilyOfThisMachine(options.formerSupervisors));
    if (options.review) {
        options.review(plan);
    }
    for (const FormerDaemon& former : plan) {
        handing.Carry(former);
    }
    handing.WaitForTheirRecords();
    HandOverCount count = handing.Count();
    count.formerRunSeen = timeline.runs.size() > 1;
    return count;
}

std::size_t CountUnwatched(const Timeline& timeline, const SupervisorRun& current)
{
    if (LastFormerRun(timeline, current) == nullptr || SupervisorProcesses().Running().size() > 1) {
        return 0;
    }
    const auto plan =
        PlanReattachment(timeline, current, {}, SourceOfThisMachine(), FamilyOfThisMachine({}));
    return static_cast<std::size_t>(
        std::count_if(plan.begin(), plan.end(), [](const FormerDaemon& former) {
            return former.plan == HandOverPlan::kAttach;
        }));
}

HandOverCount ReportUnwatched(const Reporter& reporter)
{
    const Timeline timeline = ReadTimeline();
    SupervisorRun none; // stands for the supervisor that does not run
    none.firstMs = NowMs();
    const HandOverOptions options;
    Handing handing(nullptr, options, reporter);
    for (const FormerDaemon& former :
         PlanReattachment(timeline, none, {}, SourceOfThisMachine(), FamilyOfThisMachine({}))) {
        if (former.plan == HandOverPlan::kAttach) {
            handing.Carry(former);
        }
    }
    return handing.Count();
}

std::string DescribeCount(const HandOverCount& count, bool dryRun)
{
    return std::to_string(count.attached) + (dryRun ? " to attach, " : " attached, ") +
           std::to_string(count.already) + " already, " + std::to_string(count.lost) + " not";
}

} // namespace vqrx::client::v0
