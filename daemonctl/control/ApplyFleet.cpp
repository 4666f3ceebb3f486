#include "ApplyFleet.h"

#include "HeldProcess.h"
#include "Printable.h"
#include "StopDaemon.h"
#include "TextFile.h"
#include "ThisMachine.h"
#include "Utf8.h"
#include "WaitForLog.h"
#include "WindowsService.h"

#include <exception>

namespace vqrx::client::v0 {
namespace {

using daemon_manager::DaemonRequest;
using daemon_manager::SupervisorClient;
using daemon_manager::SupervisorNotRunning;
using Plan = FleetMember::Plan;

constexpr std::size_t kVerdictColumn = 18; // width of "attached already" and two blanks

std::string LineOfVerdict(const std::string& verdict, const std::string& command)
{
    return verdict + std::string(kVerdictColumn - verdict.size(), ' ') + Printable(command);
}

std::string IdAndProcess(const DaemonStatus& daemon)
{
    std::string text =
        daemon.id ? "daemon " + std::to_string(*daemon.id) : "a daemon without an id";
    if (daemon.processId) {
        return text + ", process " + std::to_string(*daemon.processId);
    }
    return text + ", " + std::string(NameOf(daemon.state));
}

class Application {
public:
    Application(SupervisorClient& supervisor, const std::vector<DaemonStatus>& daemons,
                const ApplyOptions& options, const Reporter& reporter)
        : supervisor_(supervisor)
        , daemons_(daemons)
        , options_(options)
        , reporter_(reporter)
    {
    }

    void Place(const FleetMember& member)
    {
        try {
            options_.dryRun ? Foretell(member) : Do(member);
        } catch (const SupervisorNotRunning&) {
            throw;
        } catch (const std::exception& exception) {
            Fail(member, exception.what());
        }
    }

    void Remove(const DaemonStatus& daemon)
    {
        try {
            const bool isDone =
                options_.dryRun ? ForetellStop(daemon)
                                : StopDaemon(supervisor_, daemon, AttachedProcess::kEnd, reporter_);
            ++(isDone ? count_.stopped : count_.failed);
        } catch (const SupervisorNotRunning&) {
            throw;
        } catch (const std::exception& exception) {
            ++count_.failed;
            reporter_.failed(NameOfDaemon(daemon) + ": " + Printable(exception.what()));
        }
    }

    AppliedCount Count() const { return count_; }

private:
    static std::string CommandOf(const FleetMember& member)
    {
        ExpectedProgram program = member.program;
        program.program = member.path;
        return TextOf(program);
    }

    void Report(const std::string& verdict, const FleetMember& member, const std::string& what)
    {
        reporter_.done(LineOfVerdict(verdict, CommandOf(member)) + ": " + what);
    }

    void Fail(const FleetMember& member, const std::string& reason)
    {
        ++count_.failed;
        count_.failedLines.push_back(member.program.line);
        reporter_.failed("line " + std::to_string(member.program.line) + ": " +
                         Printable(CommandOf(member)) + ": " + reason);
    }

    // @return whether the daemon would be stopped
    bool ForetellStop(const DaemonStatus& daemon)
    {
        const std::string reason = WhyNotToEnd(daemon);
        if (!reason.empty()) {
            reporter_.failed(reason);
            return false;
        }
        reporter_.done(LineOfVerdict("would stop", WithoutBlank(daemon.command)) + ": " +
                       IdAndProcess(daemon));
        return true;
    }

    void Foretell(const FleetMember& member)
    {
        switch (member.plan) {
        case Plan::kLaunch:
            ++count_.launched;
            reporter_.done(LineOfVerdict("would launch", CommandOf(member)));
            return;
        case Plan::kTakeOver:
            ++count_.attached;
            Report("would attach", member, "process " + std::to_string(member.process.processId));
            return;
        case Plan::kService:
            ++count_.attached;
            reporter_.done(LineOfVerdict("would attach", CommandOf(member)));
            return;
        case Plan::kRegistered:
        case Plan::kAttached:
            ReportThere(member, IdAndProcess(daemons_[*member.daemon]));
            return;
        case Plan::kRefused:
            Fail(member, member.reason);
            return;
        }
    }

    void Do(const FleetMember& member)
    {
        switch (member.plan) {
        case Plan::kLaunch:
            Launch(member);
            return;
        case Plan::kTakeOver:
            TakeOver(member);
            return;
        case Plan::kService:
            AttachService(member);
            return;
        case Plan::kRegistered:
            Confirm(member);
            return;
        case Plan::kAttached:
            ReportThere(member, IdAndProcess(daemons_[*member.daemon]));
            return;
        case Plan::kRefused:
            Fail(member, member.reason);
            return;
        }
    }

    void ReportThere(const FleetMember& member, const std::string& what)
    {
        ++count_.there;
        Report(member.plan == Plan::kAttached ? "attached already" : "there already", member, what);
    }

    void Launch(const FleetMember& member)
    {
        const DaemonRequest answer =
            supervisor_.Launch(Wide(member.path), Wide(member.program.arguments));
        const std::string daemon = "daemon " + std::to_string(answer.daemonId);
        if (answer.done) {
            ++count_.launched;
            Report("launched", member, daemon);
        } else { // registered, but its process is not started yet, so the log does not show it
            ReportThere(member, daemon);
        }
    }

    // The log shows the daemon, but has no line for the stop of a daemon that never had a process.
    // A launch of the same command settles it: the supervisor registers no command twice.
    void Confirm(const FleetMember& member)
    {
        const DaemonStatus& daemon = daemons_[*member.daemon];
        std::string command = member.path + " ";
        for (const std::string& argument : member.program.arguments) {
            command += argument + " ";
        }
        if (command == daemon.command && !daemon.processId) {
            Launch(member);
        } else {
            ReportThere(member, IdAndProcess(daemon));
        }
    }

    // The plan may be old by now: the process is held, so that its id stays its own, and looked at
    // again.
    void TakeOver(const FleetMember& member)
    {
        const HeldProcess held(member.process.processId);
        const ProcessFacts facts = held.Facts();
        if (facts.state != ProcessFacts::State::kRunning ||
            facts.createdMs != member.process.createdMs) {
            Launch(member);
            return;
        }
        Attach(member, member.process.processId, {});
    }

    void AttachService(const FleetMember& member)
    {
        Attach(member, RunService(member.path, member.program.arguments), member.program.arguments);
    }

    void Attach(const FleetMember& member, std::uint32_t processId,
                const std::vector<std::string>& arguments)
    {
        const DaemonRequest answer = supervisor_.Attach(processId, Wide(arguments));
        const std::string process = "process " + std::to_string(processId);
        if (!answer.done) {
            Fail(member, "the supervisor could not attach " + process +
                             "; to find the reason: daemonctl doctor");
            return;
        }
        const std::string daemon = "daemon " + std::to_string(answer.daemonId) + ", " + process;
        if (!IsShownByLog(answer.daemonId)) {
            count_.unshownId = answer.daemonId;
            Fail(member, "attached as " + daemon +
                             ", but the log does not show it: do not repeat this command until "
                             "daemonctl ps shows the daemon");
            return;
        }
        ++count_.attached;
        Report("attached", member, daemon);
    }

    SupervisorClient& supervisor_;
    const std::vector<DaemonStatus>& daemons_;
    const ApplyOptions& options_;
    const Reporter& reporter_;
    AppliedCount count_;
};

} // namespace

AppliedCount ApplyFleet(SupervisorClient& supervisor, const FleetPlan& plan,
                        const std::vector<DaemonStatus>& daemons, const ApplyOptions& options,
                        const Reporter& reporter)
{
    Application application(supervisor, daemons, options, reporter);
    if (options.prune) { // first, so that an old daemon does not hold what its successor needs
        for (const std::size_t index : plan.surplus) {
            application.Remove(daemons[index]);
        }
    }
    for (const std::string& warning : plan.warnings) {
        reporter.failed(Printable(warning));
    }
    for (const FleetMember& member : plan.members) {
        application.Place(member);
    }
    return application.Count();
}

ExpectFile ReadFleetFile(const std::string& path)
{
    try {
        return ParseExpectFile(ReadTextFile(path));
    } catch (const std::runtime_error& error) {
        ExpectFile unread;
        unread.errors.emplace_back(error.what());
        return unread;
    }
}

std::string DescribeCount(const AppliedCount& count, const ApplyOptions& options)
{
    const auto part = [](std::size_t number, const char* what) {
        return std::to_string(number) + " " + what + ", ";
    };
    const bool dry = options.dryRun;
    std::string text = part(count.launched, dry ? "to launch" : "launched") +
                       part(count.attached, dry ? "to attach" : "attached") +
                       part(count.there, "there already");
    text += options.prune ? part(count.stopped, dry ? "to stop" : "stopped") : "";
    return text + std::to_string(count.failed) + " not";
}

} // namespace vqrx::client::v0
