#include "Commands.h"

#include "Bounded.h"
#include "ConnectionChecks.h"
#include "CrashDialogChecks.h"
#include "DoctorChecks.h"
#include "DoctorReport.h"
#include "ErrorText.h"
#include "ExitCode.h"
#include "ExitReason.h"
#include "FirewallChecks.h"
#include "InstallationChecks.h"
#include "PrintText.h"
#include "Printable.h"
#include "ThisMachine.h"
#include "TimeText.h"
#include "WaitCondition.h"
#include "WmiCheck.h"
#include "com/ComApartment.h"

#include <windows.h>

#include <chrono>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace vqrx::client::v0 {
namespace {

// The longest waits for an answer of WMI and of the firewall.
constexpr std::chrono::seconds kWmiPatience(30);
constexpr std::chrono::seconds kFirewallPatience(30);

struct DoctorOptions {
    bool json = false;
    bool prune = false;
};

FirewallRulesFacts RulesOrTimeout()
{
    const auto facts = Bounded<FirewallRulesFacts>(kFirewallPatience, [] {
        const system::com::v1::ComApartment apartment;
        return GatherFirewallRules();
    });
    FirewallRulesFacts timeout;
    timeout.result = RPC_E_TIMEOUT;
    return facts.value_or(timeout);
}

// Returns the running daemons. If the log cannot be read, these are the supervisor's child processes
// only.
// @param logIsThere  set to whether the log shows the running supervisor
std::vector<DaemonStatus> RunningDaemons(bool& logIsThere)
{
    const auto children = ChildrenOfSupervisor(); // first: a start is logged after it was made
    Timeline timeline;
    SupervisorRun run;
    ProcessSource source;
    logIsThere = false;
    try {
        timeline = ReadTimeline();
        run = RunOfThisMachine(timeline);
        source = SourceOfThisMachine();
        logIsThere = true;
    } catch (const std::runtime_error&) { // NOLINT(bugprone-empty-catch): see above
        source.arguments = ArgumentsOfProcess;
    }
    return StatusOfDaemons(run, source, NowMs(), children);
}

TroubledDaemon DescribeTrouble(const DaemonStatus& daemon)
{
    TroubledDaemon troubled;
    troubled.command = WithoutBlank(daemon.command);
    troubled.cannotStart = daemon.state == RunState::cannotStart;
    troubled.restartsLastHour = daemon.recent.lastHour;
    troubled.lastExit = daemon.lastExit ? ReadableReason(daemon.lastExit->reason) : std::string();
    return troubled;
}

void AddDaemons(DoctorFacts& facts)
{
    bool logIsThere = false;
    for (const DaemonStatus& daemon : RunningDaemons(logIsThere)) {
        facts.firewallRules.commandsInUse.push_back(daemon.command);
        if (daemon.inLog && !daemon.attached && IsRunning(facts.firewallService)) {
            facts.firewallRules.launchedCommands.push_back(daemon.command);
        }
        ++facts.daemons.count;
        if (daemon.state == RunState::cannotStart || daemon.state == RunState::restarting) {
            facts.daemons.troubled.push_back(DescribeTrouble(daemon));
        }
    }
    facts.daemons.known = logIsThere && facts.supervisor.processes.size() == 1;
}

// Returns whether the log holds the start of the running supervisor, or a record after that; nothing if
// it is not known which process that is.
std::optional<bool> LogIsCurrent(const SupervisorFacts& supervisor)
{
    if (supervisor.answer != SupervisorFacts::Answer::answers || supervisor.processes.size() != 1) {
        return std::nullopt;
    }
    const ProcessFacts process = ReadProcessFacts(supervisor.processes.front().processId);
    if (process.state != ProcessFacts::State::running) {
        return std::nullopt;
    }
    try {
        return ShowsRunOfProcess(ReadTimeline(), process.createdMs);
    } catch (const LogUnreadable&) {
        return false;
    }
}

DoctorFacts Gather()
{
    DoctorFacts facts;
    facts.version = DM_VERSION;
    facts.installation = GatherInstallationFacts();
    facts.proxy = GatherProxyFacts();
    facts.supervisor = GatherSupervisorFacts();
    facts.installation.logIsCurrent = LogIsCurrent(facts.supervisor);
    facts.firewallService = GatherFirewallServiceFacts();
    facts.firewallRules = RulesOrTimeout();
    AddDaemons(facts);
    facts.wmi = Bounded<WmiFacts>(kWmiPatience, [] {
                    const system::com::v1::ComApartment apartment;
                    return GatherWmiFacts();
                }).value_or(WmiFacts());
    facts.crashDialogs = GatherCrashDialogFacts();
    return facts;
}

// Removes the dead rules.
// @param failed  set to true if a rule could not be removed
// @return the names of the removed rules
std::vector<std::string> Prune(const FirewallRulesFacts& rules, bool& failed)
{
    const system::com::v1::ComApartment apartment;
    std::vector<std::string> removed;
    for (const std::string& name : DeadRules(rules)) {
        const long result = RemoveFirewallRule(name);
        if (result < 0) {
            failed = true;
            std::cerr << "daemonctl: rule \"" << Printable(name)
                      << "\" could not be removed: " << ResultText(result) << std::endl;
        } else {
            removed.push_back(name);
        }
    }
    return removed;
}

int Doctor(const DoctorOptions& options)
{
    const DoctorFacts facts = Gather();
    const std::vector<Finding> findings = Judge(facts);
    int exitCode = ExitCodeOf(findings);
    if (!options.json) {
        PrintText(DoctorText(findings));
    }
    std::vector<std::string> removed;
    if (options.prune) {
        bool failed = false;
        removed = Prune(facts.firewallRules, failed);
        exitCode = failed ? static_cast<int>(kRefused) : exitCode;
    }
    if (options.json) {
        PrintText(DoctorJson(findings, facts.version, removed));
    } else {
        for (const std::string& name : removed) {
            PrintText("removed \"" + Printable(name) + "\"\n");
        }
    }
    return exitCode;
}

} // namespace

void AddDoctorCommand(CLI::App& app, int& exitCode)
{
    const auto options = std::make_shared<DoctorOptions>();
    CLI::App* const command = app.add_subcommand(
        "doctor", "Check what the supervisor needs, and print how to mend each fault");
    command->add_flag("--json", options->json, "Print one JSON object");
    command->add_flag("--prune", options->prune,
                      "Print the firewall rules of programs that are gone, and remove them");
    command->footer(
        "Examples:\n"
        "  daemonctl doctor\n"
        "  daemonctl doctor --prune\n"
        "  daemonctl doctor --json\n"
        "Exit code 0: all is well; 1: there are warnings; 3: no supervisor runs, or its\n"
        "proxy/stub is not registered, and nothing else failed; 4: another check or a\n"
        "removal failed. Without --prune the command changes nothing.");
    command->callback([&exitCode, options] { exitCode = Doctor(*options); });
}

} // namespace vqrx::client::v0
