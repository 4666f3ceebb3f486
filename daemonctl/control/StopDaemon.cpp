#include "StopDaemon.h"

#include "EndHeldProcess.h"
#include "HeldProcess.h"
#include "InstalledPaths.h"
#include "Printable.h"
#include "ProcessMatch.h"
#include "ThisMachine.h"
#include "TrustedSources.h"
#include "WaitForLog.h"
#include "WindowsService.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace vqrx::client::v0 {
namespace {

using daemon_manager::SupervisorClient;

// Finds the process that an attached daemon had when it was detached: the record of the detach
// names it. The listing that the caller has may be older than the last restart.
// @return nothing if the log does not show the record in time, or cannot be read
std::optional<LoggedProcess> DetachedProcess(const DaemonStatus& daemon,
                                             const ProcessSource& source)
try {
    std::optional<LoggedProcess> detached;
    const bool isShown = WaitForLog([&](const SupervisorRun& run) {
        const DaemonHistory* const history = run.Find(*daemon.id);
        if (history == nullptr || history->state != DaemonState::kDetached ||
            history->intervals.empty()) {
            return false;
        }
        DaemonHistory before = *history;
        before.intervals.back().end = IntervalEnd::kRunning;
        detached = LastProcessOf(before, source);
        return true;
    });
    return isShown ? detached : std::nullopt;
} catch (const LogUnreadable&) {
    return std::nullopt;
}

// Only the log says that a process belongs to a daemon, unless the supervisor has started it. So
// whoever may write the log could choose which process an administrator ends.
// @return why this process must not be ended; empty if it may
std::string WhyNotToBelieveLog(std::uint32_t processId)
{
    if (!IsElevated()) {
        return {};
    }
    const std::vector<std::string> weaknesses = WeaknessesOfSource(DefaultLogPath());
    if (weaknesses.empty()) {
        return {};
    }
    const std::vector<ProcessFacts> children = ChildrenOfSupervisor();
    if (std::any_of(children.begin(), children.end(), [processId](const ProcessFacts& child) {
            return child.processId == processId;
        })) {
        return {};
    }
    return Printable(weaknesses.front()) +
           ", so somebody may have written the wrong process into the log. To end it all the same: "
           "taskkill /f /pid " +
           std::to_string(processId) + "; to mend the rights: daemonctl doctor";
}

// Ends the process of a daemon that has just been detached. @return whether it is gone
bool EndDetached(const DaemonStatus& daemon, const Reporter& reporter)
{
    const std::string id = "daemon " + std::to_string(*daemon.id);
    const ProcessSource source = SourceOfThisMachine();
    const std::optional<LoggedProcess> logged = DetachedProcess(daemon, source);
    if (!logged) {
        reporter.failed(id + " was detached, but the log does not name its process, which runs on");
        return false;
    }
    const std::string process = "process " + std::to_string(logged->processId);
    const HeldProcess held(logged->processId);
    const ProcessFacts facts = held.Facts();
    const ProcessFit fit = FitProcess(*logged, facts, source.appFolder, source.sameFile);
    if (fit != ProcessFit::kSame && fit != ProcessFit::kGone) {
        reporter.failed(id + " was detached: " + Printable(DescribeMisfit(fit, facts)) +
                        "; it was not ended");
        return false;
    }
    if (fit == ProcessFit::kGone) {
        reporter.done(id + " stopped: " + process + " had ended already");
        return true;
    }
    const std::string doubt = WhyNotToBelieveLog(logged->processId);
    if (!doubt.empty()) {
        reporter.failed(id + " was detached, " + process + " runs on: " + doubt);
        return false;
    }
    const EndedResult ended = EndHeldProcess(held, id + ", " + process, reporter);
    if (!ended.isGone) {
        reporter.failed(id + " was detached: " + process + " " + ended.text);
        return false;
    }
    reporter.done(id + " stopped: " + process + " " + ended.text);
    return true;
}

} // namespace

bool StopDaemon(SupervisorClient& supervisor, const DaemonStatus& daemon, AttachedProcess attached,
                const Reporter& reporter)
{
    if (!daemon.id) {
        reporter.failed(NameOfDaemon(daemon) +
                        ": the log does not show its id. daemonctl launch with the same program "
                        "and arguments prints it");
        return false;
    }
    const std::string id = "daemon " + std::to_string(*daemon.id);
    if (!daemon.inLog && supervisor.Detach(*daemon.id)) {
        reporter.failed(id + " was detached; the log does not show its process, which runs on");
        return attached == AttachedProcess::kLeave;
    }
    if (!daemon.attached) {
        if (daemon.processId) {
            AnnounceWait(daemon.process, NameOfDaemon(daemon), reporter);
        }
        const bool isStopped = supervisor.Stop(*daemon.id);
        isStopped ? reporter.done(id + " stopped")
                  : reporter.failed("no process was stopped: " + id +
                                    " is unknown, was attached (its process runs on), or cannot "
                                    "be ended");
        return isStopped;
    }
    const std::string reason =
        attached == AttachedProcess::kEnd ? WhyNotToEnd(daemon) : std::string();
    if (!reason.empty()) {
        reporter.failed(reason);
        return false;
    }
    if (!supervisor.Detach(*daemon.id)) {
        reporter.failed(id + " is unknown: somebody else stopped or detached it");
        return false;
    }
    if (attached == AttachedProcess::kLeave) {
        reporter.done(id + " detached, its process runs on");
        return true;
    }
    return EndDetached(daemon, reporter);
}

std::string WhyNotToEnd(const DaemonStatus& daemon)
{
    if (!daemon.processId) {
        return {};
    }
    if (!daemon.service || !MayBeProcessOfService(daemon.command, *daemon.processId)) {
        const std::string doubt = WhyNotToBelieveLog(*daemon.processId);
        return doubt.empty() ? doubt : NameOfDaemon(daemon) + ": " + doubt;
    }
    const std::string detach =
        daemon.id ? "daemonctl detach " + std::to_string(*daemon.id) + ", then " : std::string();
    return NameOfDaemon(daemon) +
           ": a Windows service is not ended by force. To stop it: " + detach + "sc stop " +
           Printable(daemon.command);
}

std::string NameOfDaemon(const DaemonStatus& daemon)
{
    std::string name =
        daemon.id ? "daemon " + std::to_string(*daemon.id) : "a daemon without an id";
    if (daemon.processId) {
        name += ", process " + std::to_string(*daemon.processId);
    }
    return name + " (" + Printable(WithoutBlank(daemon.command)) + ")";
}

} // namespace vqrx::client::v0
