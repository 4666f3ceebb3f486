#include "Commands.h"

#include "ConsoleReporter.h"
#include "DaemonSelection.h"
#include "ExitCode.h"
#include "NextStep.h"
#include "Printable.h"
#include "ProcessList.h"
#include "RestartDaemon.h"
#include "StopDaemon.h"
#include "Target.h"
#include "ThisMachine.h"
#include "WaitForLog.h"
#include "WithSupervisor.h"

#include <windows.h>

#include <io.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <functional>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace vqrx::client::v0 {
namespace {

using daemon_manager::SupervisorClient;
using daemon_manager::SupervisorNotRunning;

constexpr std::uint32_t kRestartTimeoutSeconds = 60;

struct StopOptions {
    DaemonSelection selection;
    bool end = false;   // end the processes of attached daemons
    bool leave = false; // let them run on
};

struct RestartOptions {
    DaemonSelection selection;
    std::uint32_t timeoutSeconds = kRestartTimeoutSeconds;
};

// Asks the operator, on a terminal only. @return the answer; `leave` without a terminal
AttachedProcess Ask(const DaemonStatus& daemon)
{
    if (_isatty(_fileno(stdin)) == 0 || _isatty(_fileno(stderr)) == 0) {
        return AttachedProcess::kLeave;
    }
    std::cerr << NameOfDaemon(daemon)
              << " is attached, so the supervisor lets its process run on.\n"
                 "End the process? [y/N] "
              << std::flush;
    std::string answer;
    std::getline(std::cin, answer);
    return answer.starts_with('y') || answer.starts_with('Y') ? AttachedProcess::kEnd
                                                              : AttachedProcess::kLeave;
}

// Returns the child processes of the supervisor. They matter only for a daemon that the log does
// not show, and whose id is unknown. So an operator who gives ids does not need them.
std::vector<ProcessFacts> ChildrenIfNeeded(bool isByIdOnly)
{
    try {
        return ChildrenOfSupervisor();
    } catch (const ProcessListUnreadable&) {
        if (!isByIdOnly) {
            throw;
        }
    }
    return {};
}

// Lists the daemons of the running supervisor. Without a readable log the list is empty: a daemon
// can still be stopped by its id.
std::vector<DaemonStatus> Daemons(const DaemonSelection& selection)
{
    const bool isByIdOnly = !selection.all && std::all_of(selection.targets.begin(),
                                                          selection.targets.end(), IsDaemonId);
    try {
        return ReadDaemonsOfRunning(ChildrenIfNeeded(isByIdOnly)).daemons;
    } catch (const LogUnreadable&) {
        if (!isByIdOnly) {
            throw;
        }
    }
    return {};
}

// Calls an operation for each selected daemon of the running supervisor. If it fails for one
// daemon, the others get their turn; only the end of the supervisor ends the function.
// @return the exit code
int ForEachSelected(const DaemonSelection& selection, const Reporter& reporter,
                    const std::function<bool(const DaemonStatus& daemon)>& operation)
{
    const SelectedDaemons selected = SelectDaemons(selection, Daemons(selection));
    std::optional<int> failure;
    bool isDone = !selected.daemons.empty() || !selected.unknownNames.empty();
    if (!isDone) {
        reporter.failed("the supervisor has no daemons");
    }
    for (const std::string& name : selected.unknownNames) {
        reporter.failed("no daemon runs " + Printable(name));
        isDone = false;
    }
    for (const DaemonStatus& daemon : selected.daemons) {
        try {
            isDone = operation(daemon) && isDone;
        } catch (const SupervisorNotRunning&) {
            throw;
        } catch (const LogUnreadable& exception) {
            reporter.failed(
                WithNextStep(NameOfDaemon(daemon) + ": " + Printable(exception.what())));
            failure = kLogUnreadable;
        } catch (const std::exception& exception) {
            reporter.failed(
                WithNextStep(NameOfDaemon(daemon) + ": " + Printable(exception.what())));
            failure = kRefused;
        }
    }
    if (failure) {
        return *failure;
    }
    const bool isAnyUnknown = !selected.unknownNames.empty() ||
                              std::any_of(selected.daemons.begin(), selected.daemons.end(),
                                          [](const DaemonStatus& daemon) { return !daemon.inLog; });
    if (!isDone && isAnyUnknown) {
        std::cerr << "  To see all daemons: daemonctl ps" << std::endl;
    }
    return isDone ? kDone : kNothingToDo;
}

int StopAll(SupervisorClient& supervisor, const StopOptions& options)
{
    const Reporter reporter = ConsoleReporter();
    return ForEachSelected(options.selection, reporter, [&](const DaemonStatus& daemon) {
        AttachedProcess attached = options.end ? AttachedProcess::kEnd : AttachedProcess::kLeave;
        if (daemon.attached && !options.end && !options.leave) {
            attached = Ask(daemon);
        }
        return StopDaemon(supervisor, daemon, attached, reporter);
    });
}

int RestartAll(const RestartOptions& options)
{
    const Reporter reporter = ConsoleReporter();
    return ForEachSelected(options.selection, reporter, [&](const DaemonStatus& daemon) {
        return RestartDaemon(daemon, std::uint64_t{options.timeoutSeconds} * 1000, reporter);
    });
}

// Adds the argument ID... and the option --all, of which a command needs one.
void AddSelection(const CommandDefinition& command, DaemonSelection& selection)
{
    const OptionDefinition targets =
        command
            .Option("ID", selection.targets,
                    "Daemon ids, as ps shows them, or names of programs, such as video.exe")
            .Checked(CheckTarget);
    command.Flag("--all", selection.all, "All daemons").Excludes(targets);
}

// Throws as ThrowMissing if the operator named no daemon.
void CheckSelection(const DaemonSelection& selection)
{
    if (selection.targets.empty() && !selection.all) {
        ThrowMissing("ID or --all");
    }
}

} // namespace

void AddStopCommand(const CommandDefinition& app, int& exitCode)
{
    const auto options = std::make_shared<StopOptions>();
    const CommandDefinition command =
        app.Command("stop", "End daemons and their processes; may take a minute for each");
    AddSelection(command, options->selection);
    const OptionDefinition end = command.Flag(
        "--end", options->end, "End the processes of attached daemons, too; without asking");
    command
        .Flag("--leave", options->leave,
              "Let the processes of attached daemons run on; without asking")
        .Excludes(end);
    command.Footer(
        "Examples:\n"
        "  daemonctl stop 3\n"
        "  daemonctl stop 0 video.exe --end\n"
        "  daemonctl stop --all --leave\n"
        "A process with a window is asked to quit and gets at most 30 seconds; then it is\n"
        "terminated. A process without a window is terminated at once.\n"
        "The supervisor never ends the process of an attached daemon. daemonctl detaches such a\n"
        "daemon and ends its process itself, in the same steps. On a terminal it asks first;\n"
        "otherwise --leave is the default. The process of a Windows service is not ended: use sc stop.\n"
        "Exit code 1: a daemon was not stopped.");
    command.OnChosen([&exitCode, options] {
        CheckSelection(options->selection);
        exitCode = WithSupervisorAndLog(
            [&](SupervisorClient& supervisor) { return StopAll(supervisor, *options); });
    });
}

void AddRestartCommand(const CommandDefinition& app, int& exitCode)
{
    const auto options = std::make_shared<RestartOptions>();
    const CommandDefinition command = app.Command(
        "restart", "End the processes of daemons and wait until the supervisor started them again");
    AddSelection(command, options->selection);
    command
        .Option("--timeout", options->timeoutSeconds,
                "Wait at most this many seconds for each start; default: 60")
        .Decimal();
    command.Footer(
        "Examples:\n"
        "  daemonctl restart 3\n"
        "  daemonctl restart video.exe recorder.exe\n"
        "  daemonctl restart --all --timeout 10\n"
        "daemonctl ends each process in the steps of stop, one after the other. Attached daemons\n"
        "stay attached.\n"
        "Exit code 1: a daemon was not restarted.");
    command.OnChosen([&exitCode, options] {
        CheckSelection(options->selection);
        exitCode = WithSupervisorAndLog([&](SupervisorClient&) { return RestartAll(*options); });
    });
}

} // namespace vqrx::client::v0
