#include "Commands.h"

#include "ConnectionChecks.h"
#include "DaemonSelection.h"
#include "ExitCode.h"
#include "Printable.h"
#include "Target.h"
#include "ThisMachine.h"
#include "WaitCondition.h"
#include "WaitForLog.h"
#include "WatchDaemon.h"
#include "WithSupervisor.h"

#include <windows.h>

#include <algorithm>
#include <cstdint>
#include <iostream>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace vqrx::client::v0 {
namespace {

constexpr DWORD kLookAgainMs = 200; // at the supervisor

constexpr const char* kSupervisor = "supervisor";
constexpr const char* kNoSupervisorRuns = "no-supervisor";

const std::map<std::string, WaitFor> kConditions = {
    {"running", WaitFor::kRunning}, {"ended", WaitFor::kEnded}, {"restarted", WaitFor::kRestarted}};

struct WaitOptions {
    std::string target;              // as typed; empty for the conditions about the supervisor
    std::optional<std::uint32_t> id; // of the target, when it is known
    std::string condition = "running";
    std::uint32_t timeoutSeconds = 60;
};

int PrintResult(const WaitOptions& options, const Observation& now)
{
    const std::string id = std::to_string(*options.id);
    if (now.running) {
        std::cout << "daemon " << id << " runs as process " << *now.processId << std::endl;
    } else {
        std::cout << "daemon " << id << " has ended" << std::endl;
    }
    return kDone;
}

int PrintTimeout(const WaitOptions& options, const Observation& now)
{
    const std::string id = std::to_string(*options.id);
    std::cerr << "daemonctl: daemon " << id << " was not " << options.condition << " within "
              << options.timeoutSeconds << " s: ";
    if (!now.known) {
        std::cerr << "the log does not show it";
    } else if (now.running) {
        std::cerr << "it runs as process " << *now.processId;
    } else if (now.letGo) {
        std::cerr << "it was detached or could not be stopped, process " << *now.processId
                  << " runs on";
    } else {
        std::cerr << "it has no process";
    }
    std::cerr << (now.known ? "\n  To see what happened: daemonctl log --tail 10 --daemon " + id
                            : "\n  To see all daemons: daemonctl ps")
              << std::endl;
    return kNothingToDo;
}

// Returns the ids of the daemons that the target means. Waits until there is one.
std::vector<std::uint32_t> FindIds(const std::string& target, ULONGLONG deadline)
{
    if (IsDaemonId(target)) {
        return {static_cast<std::uint32_t>(std::stoul(target))};
    }
    for (;;) {
        const DaemonsNow now = ReadDaemonsOfRunning(ChildrenOfSupervisor());
        std::vector<std::uint32_t> ids;
        for (const DaemonStatus& daemon : SelectDaemons({{target}, false}, now.daemons).daemons) {
            if (daemon.id) {
                ids.push_back(*daemon.id);
            }
        }
        if (!ids.empty() || GetTickCount64() >= deadline) {
            return ids;
        }
        Sleep(kLookAgainMs);
    }
}

int Wait(const WaitOptions& options)
{
    const WaitFor what = kConditions.at(options.condition);
    const ProcessSource source = SourceOfThisMachine();
    Observation now;
    const auto reached = [&](const Observation& first, const Observation& latest) {
        return IsFulfilled(what, first, latest, source.facts);
    };
    switch (WatchDaemon(*options.id, options.timeoutSeconds, source, reached, now)) {
    case WatchEnd::kFulfilled:
        return PrintResult(options, now);
    case WatchEnd::kTimeOver:
        return PrintTimeout(options, now);
    case WatchEnd::kSupervisorEnded:
        break;
    }
    std::cerr << "daemonctl: the supervisor has ended\n  To see what runs on: daemonctl ps"
              << std::endl;
    return kNoSupervisor;
}

int WaitForTarget(WaitOptions options)
{
    const ULONGLONG start = GetTickCount64();
    const std::vector<std::uint32_t> ids =
        FindIds(options.target, start + ULONGLONG{options.timeoutSeconds} * 1000);
    if (ids.empty()) {
        std::cerr << "daemonctl: no daemon with a known id runs " << Printable(options.target)
                  << "\n  To see all daemons: daemonctl ps" << std::endl;
        return kNothingToDo;
    }
    if (ids.size() > 1) {
        std::cerr << "daemonctl: several daemons run " << Printable(options.target)
                  << "; wait for one of these ids:";
        for (const std::uint32_t id : ids) {
            std::cerr << ' ' << id;
        }
        std::cerr << std::endl;
        return kNothingToDo;
    }
    options.id = ids.front();
    const ULONGLONG waited = (GetTickCount64() - start) / 1000;
    options.timeoutSeconds -=
        static_cast<std::uint32_t>(std::min<ULONGLONG>(waited, options.timeoutSeconds));
    return Wait(options);
}

bool IsAboutSupervisor(const std::string& condition)
{
    return condition == kSupervisor || condition == kNoSupervisorRuns;
}

// Prints why the supervisor is not in the awaited state. @return the exit code
int PrintSupervisorTimeout(const WaitOptions& options, const SupervisorFacts& facts)
{
    const bool wanted = options.condition == kSupervisor;
    std::cerr << "daemonctl: "
              << (wanted ? "no supervisor answered within " : "a supervisor still ran after ")
              << options.timeoutSeconds << " s: " << DescribeSupervisor(facts)
              << "\n  To find out more: daemonctl doctor" << std::endl;
    return kNothingToDo;
}

int WaitForSupervisor(const WaitOptions& options)
{
    const bool wanted = options.condition == kSupervisor;
    const ULONGLONG start = GetTickCount64();
    for (;;) {
        const SupervisorFacts facts = GatherSupervisorFacts();
        const bool answers = facts.answer == SupervisorFacts::Answer::kAnswers;
        const bool isGone =
            facts.answer == SupervisorFacts::Answer::kNotRunning && facts.processes.empty();
        if (wanted ? answers : isGone) {
            std::cout << (wanted ? "the supervisor answers" : "no supervisor runs") << std::endl;
            return kDone;
        }
        if (facts.answer == SupervisorFacts::Answer::kProxyNotRegistered && wanted) {
            std::cerr << "daemonctl: the supervisor runs, but DaemonMgrPS.dll is not registered\n  "
                      << HowToRegister(ProxyBesideThisProgram()) << std::endl;
            return kNoSupervisor;
        }
        if (GetTickCount64() - start >= ULONGLONG{options.timeoutSeconds} * 1000) {
            return PrintSupervisorTimeout(options, facts);
        }
        Sleep(kLookAgainMs);
    }
}

// Throws as ThrowInvalid does: if a condition about a daemon comes without a daemon, or a condition
// about the supervisor comes with one.
void CheckWaitUsage(const WaitOptions& options)
{
    if (IsAboutSupervisor(options.condition) != options.target.empty()) {
        ThrowInvalid("--for " + options.condition,
                     options.target.empty() ? "needs a daemon" : "takes no daemon");
    }
}

} // namespace

void AddWaitCommand(const CommandDefinition& app, int& exitCode)
{
    const auto options = std::make_shared<WaitOptions>();
    const CommandDefinition command =
        app.Command("wait", "Wait until a daemon runs, has ended or was restarted, or until "
                            "the supervisor runs or has ended");
    command
        .Option("ID", options->target,
                "Daemon id, as ps shows it, or the name of a program, such as video.exe; none "
                "for the last two states")
        .Checked(CheckTarget);
    command.Choice<std::string>("--for", options->condition,
                                {{"running", "running"},
                                 {"ended", "ended"},
                                 {"restarted", "restarted"},
                                 {kSupervisor, kSupervisor},
                                 {kNoSupervisorRuns, kNoSupervisorRuns}},
                                "Wait for this state; default: running");
    command
        .Option("--timeout", options->timeoutSeconds, "Wait at most this many seconds; default: 60")
        .Decimal();
    command.Footer(
        "Examples:\n"
        "  daemonctl wait 3 --for running --timeout 10\n"
        "  daemonctl wait video.exe --for restarted\n"
        "  daemonctl wait --for supervisor --timeout 300\n"
        "running: the daemon has a process.\n"
        "ended: the process that runs when the command begins has ended, even if the supervisor\n"
        "has started the next one since; at once if the daemon has no process.\n"
        "restarted: the daemon has another process than when the command began.\n"
        "supervisor: a supervisor answers. no-supervisor: no process of a supervisor runs.\n"
        "Exit code 1: the state was not reached in this time.");
    command.OnChosen([&exitCode, options] {
        CheckWaitUsage(*options);
        if (IsAboutSupervisor(options->condition)) {
            exitCode = WaitForSupervisor(*options);
            return;
        }
        exitCode = BesideSupervisor([&] { return WaitForTarget(*options); });
    });
}

} // namespace vqrx::client::v0
