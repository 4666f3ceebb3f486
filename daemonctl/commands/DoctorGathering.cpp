#include "DoctorGathering.h"

#include "Bounded.h"
#include "ComSecurityInLog.h"
#include "ExitReason.h"
#include "FilePresence.h"
#include "GatherAutostart.h"
#include "HandOver.h"
#include "InstalledPaths.h"
#include "LaunchedDaemon.h"
#include "LogFile.h"
#include "ProgramOfCommand.h"
#include "ScanDamage.h"
#include "ThisMachine.h"
#include "TimeText.h"
#include "Timeline.h"
#include "com/ComApartment.h"

#include <windows.h>

#include <chrono>
#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace vqrx::client::v0 {
namespace {

// The longest waits for an answer of WMI and of the firewall.
constexpr std::chrono::seconds kWmiPatience(30);
constexpr std::chrono::seconds kFirewallPatience(30);

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

// Returns the running daemons. If the log cannot be read, these are the supervisor's child
// processes only.
// @param nowMs       set to the time after the log was read
// @param logIsThere  set to whether the log shows the running supervisor
// @param unwatched   set to the number of programs that run on from former supervisors
std::vector<DaemonStatus> RunningDaemons(std::int64_t& nowMs, bool& logIsThere,
                                         std::size_t& unwatched)
{
    const auto children = ChildrenOfSupervisor(); // first: a start is logged after it was made
    Timeline timeline;
    SupervisorRun run;
    ProcessSource source;
    logIsThere = false;
    try {
        timeline = ReadTimeline();
        const SupervisorRun& current = RunOfThisMachine(timeline);
        run = current;
        source = SourceOfThisMachine();
        logIsThere = true;
        unwatched = CountUnwatched(timeline, current);
    } catch (const std::runtime_error&) { // NOLINT(bugprone-empty-catch): see above
        source.arguments = ArgumentsOfProcess;
    }
    nowMs = NowMs();
    return StatusOfDaemons(run, source, nowMs, children);
}

// Returns nothing for a daemon that does its work, or that ended just now.
std::optional<TroubledDaemon::Kind> TroubleOf(const DaemonStatus& daemon, std::int64_t nowMs)
{
    if (daemon.state == RunState::kCannotStart) {
        return TroubledDaemon::Kind::kCannotStart;
    }
    if (daemon.state == RunState::kRestarting) {
        return TroubledDaemon::Kind::kEndsAgainAndAgain;
    }
    return IsLeftEnded(daemon, nowMs) ? std::optional(TroubledDaemon::Kind::kLeftEnded)
                                      : std::nullopt;
}

TroubledDaemon DescribeTrouble(const DaemonStatus& daemon, TroubledDaemon::Kind kind)
{
    TroubledDaemon troubled;
    troubled.id = daemon.id;
    troubled.command = WithoutBlank(daemon.command);
    troubled.kind = kind;
    if (kind == TroubledDaemon::Kind::kCannotStart) {
        troubled.obstacles = WarningsAboutProgram(ProgramPathOf(daemon.command));
    }
    troubled.restartsLastHour = daemon.recent.lastHour;
    troubled.lastExit = daemon.lastExit ? ReadableReason(daemon.lastExit->reason) : std::string();
    return troubled;
}

// @return the programs of the daemons that run
std::vector<std::string> AddDaemons(DoctorFacts& facts)
{
    std::vector<std::string> programs;
    std::int64_t nowMs = 0;
    bool logIsThere = false;
    for (const DaemonStatus& daemon : RunningDaemons(nowMs, logIsThere, facts.daemons.unwatched)) {
        if (daemon.Runs() && !daemon.process.image.empty()) {
            programs.push_back(daemon.process.image);
        }
        facts.firewallRules.commandsInUse.push_back(daemon.command);
        if (daemon.inLog && !daemon.attached && IsRunning(facts.firewallService)) {
            facts.firewallRules.launchedCommands.push_back(daemon.command);
        }
        ++facts.daemons.count;
        if (const auto trouble = TroubleOf(daemon, nowMs)) {
            facts.daemons.troubled.push_back(DescribeTrouble(daemon, *trouble));
        }
    }
    facts.daemons.known = logIsThere && PossibleSupervisors(facts.supervisor).size() == 1;
    return programs;
}

// Returns whether the log holds the start of the running supervisor, or a record after that;
// nothing if it is not known which process that is.
std::optional<bool> LogIsCurrent(const SupervisorFacts& supervisor)
{
    const std::vector<ImageFacts> possible = PossibleSupervisors(supervisor);
    if (supervisor.answer != SupervisorFacts::Answer::kAnswers || possible.size() != 1) {
        return std::nullopt;
    }
    const ProcessFacts process = ReadProcessFacts(possible.front().processId);
    if (process.state != ProcessFacts::State::kRunning) {
        return std::nullopt;
    }
    try {
        const Timeline timeline = ReadTimeline();
        const SupervisorRun* const run = RunThatGoesOn(timeline);
        return run != nullptr && IsRunOfProcess(*run, process);
    } catch (const LogUnreadable&) {
        return false;
    }
}

// Reads the log as a whole and adds what of it cannot be read. Other facts show a missing log.
void AddDamageOfLog(InstallationFacts& facts)
{
    try {
        facts.logDamage = DescribeDamage(
            ReadLogFile(facts.logFile, TextEncoding::kAuto, [](const Record& /*record*/) {}));
    } catch (const std::runtime_error& error) {
        facts.logUnreadable = MayBeThere(facts.logFile) ? error.what() : "";
    }
}

// Looks for failures of COM's security in the records of the running supervisor.
ComSecurityFacts ComSecurityOf(const InstallationFacts& installation)
{
    ComSecurityFacts facts;
    if (installation.logIsCurrent.value_or(false)) {
        try {
            std::vector<Record> records;
            const ScanSummary summary =
                ReadLogFile(DefaultLogPath(), TextEncoding::kAuto,
                            [&records](Record record) { records.push_back(std::move(record)); });
            facts = ComSecurityInLog(records, summary.IsSound());
        } catch (const std::runtime_error&) { // the log became unreadable just now
            facts.known = false;
        }
    }
    facts.machineLimits = HasMachineLimits();
    return facts;
}

} // namespace

DoctorFacts GatherDoctorFacts()
{
    DoctorFacts facts;
    facts.version = DM_VERSION;
    facts.installation = GatherInstallationFacts();
    facts.proxy = GatherProxyFacts();
    facts.supervisor = GatherSupervisorFacts();
    facts.installation.logIsCurrent = LogIsCurrent(facts.supervisor);
    AddDamageOfLog(facts.installation);
    facts.firewallService = GatherFirewallServiceFacts();
    facts.firewallRules = RulesOrTimeout();
    facts.rights = GatherRightsFacts(facts.installation.root, AddDaemons(facts));
    facts.proxyOverrides = GatherProxyOverrides();
    facts.comSecurity = ComSecurityOf(facts.installation);
    facts.wmi = Bounded<WmiFacts>(kWmiPatience, [] {
                    const system::com::v1::ComApartment apartment;
                    return GatherWmiFacts();
                }).value_or(WmiFacts());
    facts.crashDialogs = GatherCrashDialogFacts();
    facts.autostart = GatherAutostartFacts();
    return facts;
}

} // namespace vqrx::client::v0
