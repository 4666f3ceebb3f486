#include "Commands.h"

#include "ExitCode.h"
#include "ProcessList.h"
#include "ShutdownProgress.h"
#include "SupervisorProcesses.h"
#include "ThisMachine.h"
#include "WaitCondition.h"
#include "WithSupervisor.h"

#include <windows.h>

#include <cstdint>
#include <iostream>
#include <memory>
#include <optional>
#include <string>

namespace vqrx::client::v0 {
namespace {

using daemon_manager::SupervisorClient;

constexpr DWORD kAskForOrderAgainMs = 100;
constexpr ULONGLONG kOrderPatienceMs = 5000;

struct ExitOptions {
    bool noWait = false;
    std::uint32_t timeoutSeconds = kSupervisorEndMs / 1000;
};

// Returns the run that is about to end; nothing if the log does not show it.
std::optional<RunMark> RunBeforeTheOrder()
{
    try {
        const Timeline timeline = ReadTimeline();
        const SupervisorRun* const run = FindRunOfThisMachine(timeline);
        return run != nullptr ? std::optional(MarkOf(*run)) : std::nullopt;
    } catch (const LogUnreadable&) {
        return std::nullopt;
    }
}

// The record of the order reaches the log a moment after the call.
std::string ProgressOfShutdown(const std::optional<RunMark>& run)
{
    try {
        const ULONGLONG start = GetTickCount64();
        Timeline timeline = ReadTimeline();
        while (!ShowsOrder(timeline, run) && GetTickCount64() - start < kOrderPatienceMs) {
            Sleep(kAskForOrderAgainMs);
            timeline = ReadTimeline();
        }
        return DescribeShutdown(timeline, run);
    } catch (const LogUnreadable& error) {
        return std::string("Its log shows nothing about it: ") + error.what();
    }
}

std::string ResultOfShutdown(const std::optional<RunMark>& run)
{
    try {
        return DescribeEnd(ReadTimeline(), run);
    } catch (const LogUnreadable&) {
        return DescribeEnd({}, run);
    }
}

int WaitForEnd(const SupervisorProcesses& processes, const std::optional<RunMark>& run,
               std::uint32_t timeoutSeconds)
{
    if (!processes.WaitUntilAtMost(0, std::uint64_t{timeoutSeconds} * 1000)) {
        std::cerr << "daemonctl: the supervisor has not ended within " << timeoutSeconds
                  << " s: " << NamesOf(processes.Running()) << " still runs\n  "
                  << ProgressOfShutdown(run) << std::endl;
        return kRefused;
    }
    std::cout << ResultOfShutdown(run) << std::endl;
    return kDone;
}

int Exit(SupervisorClient& supervisor, const ExitOptions& options)
{
    if (options.noWait) {
        supervisor.Exit();
        std::cout << "the supervisor ends; its daemons run on" << std::endl;
        return kDone;
    }
    const std::optional<RunMark> run = RunBeforeTheOrder();
    const SupervisorProcesses processes; // found before the call: the process may end at once
    supervisor.Exit();
    try {
        return WaitForEnd(processes, run, options.timeoutSeconds);
    } catch (const ProcessListUnreadable& error) {
        std::cerr
            << "daemonctl: the supervisor has accepted the order, but its end cannot be seen: "
            << error.what() << std::endl;
        return kRefused;
    }
}

} // namespace

void AddExitCommand(const CommandDefinition& app, int& exitCode)
{
    const auto options = std::make_shared<ExitOptions>();
    const CommandDefinition command = app.Command(
        "exit", "End the supervisor and wait for its end; the processes of its daemons run on");
    const OptionDefinition noWait = command.Flag(
        "--no-wait", options->noWait, "Return as soon as the supervisor has accepted the order");
    command
        .Option("--timeout", options->timeoutSeconds,
                "Wait at most this many seconds; default: 120")
        .Decimal()
        .Excludes(noWait);
    command.Footer(
        "Example:\n  daemonctl exit\n"
        "The command returns after the process DaemonManager.exe has ended. A stop that\n"
        "is under way may delay that by a minute.\n"
        "Exit code 4: the process still runs after the timeout. It ends later, by\n"
        "itself or, if its console has stopped, after Esc in its window.");
    command.OnChosen([&exitCode, options] {
        exitCode = WithSupervisor(
            [&](SupervisorClient& supervisor) { return Exit(supervisor, *options); });
    });
}

} // namespace vqrx::client::v0
