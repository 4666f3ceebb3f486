#include "Commands.h"

#include "ApplyFleet.h"
#include "ConsoleReporter.h"
#include "ExitCode.h"
#include "FilePresence.h"
#include "FleetSource.h"
#include "FormerSupervisor.h"
#include "HandOverLock.h"
#include "HandOverTrust.h"
#include "InstalledPaths.h"
#include "PrintText.h"
#include "Printable.h"
#include "ThisMachine.h"
#include "TimeText.h"
#include "WaitForLog.h"
#include "WithSupervisor.h"

#include <algorithm>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace vqrx::client::v0 {
namespace {

using daemon_manager::SupervisorClient;

struct ApplyArguments {
    std::string file;
    ApplyOptions options;
    bool trust = false;
};

// Prints the errors of the file's lines. @return whether there is none
bool PrintErrors(const std::string& file, const std::vector<std::string>& errors)
{
    for (const std::string& error : errors) {
        std::cerr << "daemonctl: " << file << ", " << Printable(error) << std::endl;
    }
    if (!errors.empty()) {
        std::cerr << "daemonctl: nothing was done\n"
                     "  For the form of a fleet file, with an example: daemonctl apply --help"
                  << std::endl;
    }
    return errors.empty();
}

int Apply(SupervisorClient& supervisor, const ApplyArguments& arguments, const ExpectFile& fleet)
{
    // The log need not be believed here, so it does not show supervisors of other folders.
    const FormerSupervisorWait wait{"apply", arguments.options.dryRun, kSupervisorEndMs / 1000};
    if (!WaitForFormerSupervisor(SupervisorProcesses(), wait)) {
        std::cerr << "  End the process, then repeat the command" << std::endl;
        return kRefused;
    }
    std::optional<HandOverLock> lock;
    if (!arguments.options.dryRun) {
        lock.emplace(HandOverLockPath(), ConsoleReporter(), kHandOverPatienceMs);
    }
    const auto [run, nowMs, daemons] = ReadDaemonsOfRunning(ChildrenOfSupervisor());
    FleetSource source = FleetSourceOfThisMachine();
    source.attachedKnown = run.beginningSeen;
    const FleetPlan plan = PlanFleet(fleet.programs, daemons, source);
    if (!PrintErrors(arguments.file, plan.errors)) {
        return kWrongUsage;
    }
    if (std::any_of(plan.members.begin(), plan.members.end(), [](const FleetMember& member) {
            return member.plan == FleetMember::Plan::kRefused;
        })) {
        PrintNotes(daemons, run);
    }
    const AppliedCount count =
        ApplyFleet(supervisor, plan, daemons, arguments.options, ConsoleReporter());
    PrintText(DescribeCount(count, arguments.options) + "\n");
    if (count.failed != 0) {
        return kRefused;
    }
    const bool isMissing = count.launched + count.attached + count.stopped != 0;
    return arguments.options.dryRun && isMissing ? kNothingToDo : kDone;
}

} // namespace

void AddApplyCommand(const CommandDefinition& app, int& exitCode)
{
    const auto arguments = std::make_shared<ApplyArguments>();
    const CommandDefinition command =
        app.Command("apply", "Launch what a fleet file names and no daemon runs yet");
    command.Option("FILE", arguments->file, "The fleet file: one program per line, see check")
        .Required();
    command.Flag("--prune", arguments->options.prune,
                 "Also stop the daemons that fit no line of the file, attached ones too");
    command.Flag("--dry-run", arguments->options.dryRun,
                 "Print what the command would do, and do nothing");
    command.Flag("--trust", arguments->trust,
                 "Believe a fleet file that others than administrators may change");
    command.Footer(
        "Examples:\n"
        "  daemonctl apply C:\\FW\\App\\fleet.txt --dry-run\n"
        "  daemonctl apply C:\\FW\\App\\fleet.txt\n"
        "A fleet file:\n"
        "  # a full path, or the name of a file in \\App, or of a Windows service; and arguments\n"
        "  C:\\FW\\App\\video.exe --input 3\n"
        "  \"C:\\Program Files\\SNMP\\agent.exe\" \"two words\"\n"
        "  recorder.exe\n"
        "A daemon with the program and exactly the arguments of a line stays as it is, whether it\n"
        "was launched or attached. If a line has a fault, nothing is done.\n"
        "The supervisor starts the programs with its own rights. So an administrator's apply refuses\n"
        "a file that others may change (--trust).\n"
        "Exit code 0: everything in the file is registered; 1: --dry-run, and something is to be\n"
        "done; 2: the file cannot be read or has a fault; 4: something failed.");
    command.OnChosen([&exitCode, arguments] {
        const bool isThere = MayBeThere(arguments->file);
        if (isThere && !arguments->trust && !arguments->options.dryRun &&
            !CanBelieveFleet(arguments->file)) {
            exitCode = kRefused;
            return;
        }
        const ExpectFile fleet = ReadFleetFile(arguments->file);
        if (!PrintErrors(arguments->file, fleet.errors)) {
            exitCode = kWrongUsage;
            return;
        }
        if (!isThere) {
            PrintNotThere(arguments->file);
            exitCode = kWrongUsage;
            return;
        }
        exitCode = WithSupervisorAndLog(
            [&](SupervisorClient& supervisor) { return Apply(supervisor, *arguments, fleet); });
    });
}

} // namespace vqrx::client::v0
