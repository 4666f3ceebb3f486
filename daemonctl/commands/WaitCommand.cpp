#include "Commands.h"

#include "DecimalNumber.h"
#include "ExitCode.h"
#include "NamedValue.h"
#include "ThisMachine.h"
#include "WaitCondition.h"
#include "WithSupervisor.h"

#include <windows.h>

#include <cstdint>
#include <iostream>
#include <map>
#include <memory>
#include <optional>
#include <string>

namespace vqrx::client::v0 {
namespace {

constexpr DWORD kLookAgainMs = 200;

const std::map<std::string, WaitFor> kConditions = {
    {"running", WaitFor::running}, {"ended", WaitFor::ended}, {"restarted", WaitFor::restarted}};

struct WaitOptions {
    std::uint32_t id = 0;
    std::string condition = "running";
    std::uint32_t timeoutSeconds = 60;
};

int PrintResult(const WaitOptions& options, const Observation& now)
{
    const std::string id = std::to_string(options.id);
    if (now.running) {
        std::cout << "daemon " << id << " runs as process " << *now.processId << std::endl;
    } else {
        std::cout << "daemon " << id << " has ended" << std::endl;
    }
    return kDone;
}

int PrintTimeout(const WaitOptions& options, const Observation& now)
{
    std::cerr << "daemonctl: daemon " << options.id << " was not " << options.condition
              << " within " << options.timeoutSeconds << " s: ";
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
    std::cerr << std::endl;
    return kNothingToDo;
}

int Wait(const WaitOptions& options)
{
    const WaitFor what = kConditions.at(options.condition);
    const ProcessSource source = SourceOfThisMachine();
    const ULONGLONG start = GetTickCount64();
    const ULONGLONG timeoutMs = ULONGLONG{options.timeoutSeconds} * 1000;
    Observation first;
    std::optional<RunMark> lastLook;
    for (;;) {
        const Timeline timeline = ReadTimeline();
        const SupervisorRun* const run = RunThatGoesOn(timeline);
        if (run == nullptr || (lastLook && !IsSameRun(*lastLook, MarkOf(*run)))) {
            std::cerr << "daemonctl: the supervisor has ended" << std::endl;
            return kNoSupervisor;
        }
        lastLook = MarkOf(*run);
        const Observation now = Observe(*run, options.id, source);
        first = first.known ? first : now;
        if (IsFulfilled(what, first, now, source.facts)) {
            return PrintResult(options, now);
        }
        if (GetTickCount64() - start >= timeoutMs) {
            return PrintTimeout(options, now);
        }
        Sleep(kLookAgainMs);
    }
}

} // namespace

void AddWaitCommand(CLI::App& app, int& exitCode)
{
    const auto options = std::make_shared<WaitOptions>();
    CLI::App* const command =
        app.add_subcommand("wait", "Wait until a daemon runs, has ended or was restarted");
    command->add_option("ID", options->id, "Daemon id, as ps shows it")
        ->required()
        ->transform(DecimalNumber());
    command->add_option("--for", options->condition, "Wait for this state; default: running")
        ->transform(NamedValue<std::string>(
            {{"running", "running"}, {"ended", "ended"}, {"restarted", "restarted"}}));
    command
        ->add_option("--timeout", options->timeoutSeconds,
                     "Wait at most this many seconds; default: 60")
        ->transform(DecimalNumber());
    command->footer(
        "Examples:\n"
        "  daemonctl wait 3 --for running --timeout 10\n"
        "  daemonctl wait 3 --for restarted\n"
        "running: the daemon has a process.\n"
        "ended: the process that runs when the command begins has ended, even if the supervisor\n"
        "has started the next one since; at once if the daemon has no process.\n"
        "restarted: the daemon has another process than when the command began.\n"
        "Exit code 1: the daemon did not reach the state in this time.");
    command->callback([&exitCode, options] {
        exitCode =
            WithSupervisorAndLog([&](daemon_manager::SupervisorClient&) { return Wait(*options); });
    });
}

} // namespace vqrx::client::v0
