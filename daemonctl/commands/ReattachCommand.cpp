#include "Commands.h"

#include "ApplyFleet.h"
#include "ConsoleReporter.h"
#include "ExitCode.h"
#include "FilePresence.h"
#include "FormerSupervisor.h"
#include "HandOver.h"
#include "HandOverTrust.h"
#include "InstalledPaths.h"
#include "PasteableText.h"
#include "PrintText.h"
#include "Printable.h"
#include "SupervisorProcesses.h"
#include "TextFile.h"
#include "ThisMachine.h"
#include "Unwatched.h"
#include "WithSupervisor.h"

#include <cstdint>
#include <iostream>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace vqrx::client::v0 {
namespace {

using daemon_manager::SupervisorClient;

struct ReattachOptions {
    std::string from;
    std::string fleet;
    std::string formerLog;
    bool dryRun = false;
    bool noWait = false;
    bool trust = false;
    bool outside = false;
    std::uint32_t timeoutSeconds = kSupervisorEndMs / 1000;
};

// The logs must be believed.
// @return false if the former supervisor has not ended within the time
bool HasFormerEnded(const ReattachOptions& options)
{
    SupervisorProcesses processes;
    processes.AddElsewhere(ReadTimelineAfter(options.formerLog));
    if (WaitForFormerSupervisor(processes, {"reattach", options.dryRun, options.timeoutSeconds})) {
        return true;
    }
    std::cerr << "  End the process. If it is no supervisor: daemonctl reattach --no-wait"
              << std::endl;
    return false;
}

// Reads the listing and the fleet file that the operator named. Prints why one cannot be read.
// @return whether all is read
bool ReadFiles(const ReattachOptions& options, HandOverOptions& handOver)
{
    try {
        if (!options.from.empty()) {
            handOver.listed = ParseListing(ReadTextFile(options.from));
        }
    } catch (const std::exception& exception) {
        std::cerr
            << "daemonctl: " << options.from << ": " << exception.what()
            << "\n  To make a listing while the former supervisor runs: daemonctl ps --output "
               "FILE\n  Without a listing: daemonctl reattach"
            << std::endl;
        return false;
    }
    if (!options.fleet.empty()) {
        ExpectFile fleet = ReadFleetFile(options.fleet);
        for (const std::string& error : fleet.errors) {
            std::cerr << "daemonctl: " << options.fleet << ", " << Printable(error) << std::endl;
        }
        if (!fleet.errors.empty()) {
            std::cerr << "  For the form of a fleet file, with an example: daemonctl apply --help"
                      << std::endl;
        }
        handOver.fleet = std::move(fleet.programs);
        return fleet.errors.empty();
    }
    return true;
}

// A supervisor that cannot read its log begins a new one. The new one does not show the former run.
// @return whether there is such a log, and nobody has asked to read it
bool PrintDamagedLogs(const HandOverCount& count, const ReattachOptions& options)
{
    if (count.formerRunSeen || !options.from.empty() || !options.formerLog.empty()) {
        return false;
    }
    const std::vector<std::string> logs = DamagedLogs();
    for (const std::string& log : logs) {
        std::cerr
            << "daemonctl: the log does not show the former supervisor; this damaged log was set "
               "aside: "
            << Printable(log) << "\n  "
            << AdviceFor("To read it, too: daemonctl reattach --former-log ", log,
                         "To read it, too, give its path to daemonctl reattach with the option "
                         "--former-log.")
            << std::endl;
    }
    return !logs.empty();
}

int Reattach(SupervisorClient& supervisor, const ReattachOptions& options,
             const HandOverOptions& handOver)
{
    std::vector<std::string> logs{DefaultLogPath()};
    if (!options.formerLog.empty()) {
        logs.push_back(options.formerLog);
    }
    for (const std::string& log : logs) {
        if (!MayBeThere(log)) { // if it appeared after the check, it would be read unchecked
            throw LogUnreadable(log + " does not exist");
        }
    }
    if (!options.trust && !CanBelieve(logs)) {
        return kRefused;
    }
    if (!options.noWait && !HasFormerEnded(options)) {
        return kRefused;
    }
    const HandOverCount count = HandOver(supervisor, handOver, ConsoleReporter());
    PrintText(DescribeCount(count, options.dryRun) + "\n");
    if (count.lost != 0 || PrintDamagedLogs(count, options)) {
        return kRefused;
    }
    return count.attached != 0 ? kDone : kNothingToDo;
}

} // namespace

void AddReattachCommand(const CommandDefinition& app, int& exitCode)
{
    const auto options = std::make_shared<ReattachOptions>();
    const CommandDefinition command = app.Command(
        "reattach", "Attach the running daemons of the former supervisor, after an upgrade");
    command.Option("--from", options->from,
                   "Read the daemons from this file, which ps --output made before the former "
                   "supervisor ended");
    command.Option("--former-log", options->formerLog,
                   "Read this log first, for example a damaged one that was set aside");
    command.Option("--fleet", options->fleet,
                   "Take the arguments of Windows services from the lines of this fleet file");
    command.Flag("--trust", options->trust,
                 "Believe the log and the listing although others than administrators may "
                 "change them");
    command.Flag("--outside", options->outside,
                 "Attach programs outside the folder App without a question");
    command.Flag("--dry-run", options->dryRun,
                 "Print what the command would do, and do nothing; without a supervisor, print "
                 "what runs unwatched");
    const OptionDefinition noWait =
        command.Flag("--no-wait", options->noWait,
                     "Do not wait for the end of other processes of the supervisor's program");
    command
        .Option("--timeout", options->timeoutSeconds,
                "Wait at most this many seconds for the end of the former supervisor; "
                "default: 120")
        .Decimal()
        .Excludes(noWait);
    command.Footer(
        "Examples:\n"
        "  daemonctl ps --output C:\\FW\\Logs\\before.json\n"
        "  daemonctl exit\n"
        "  (replace the program, start it)\n"
        "  daemonctl reattach --from C:\\FW\\Logs\\before.json\n"
        "Without --from the command finds the daemons in the log. A daemon whose start the log no\n"
        "longer shows is found if the former supervisor started it, and another one that the log\n"
        "shows. The command attaches a process only if its program and its time of creation show\n"
        "that it is still the process of the daemon. The supervisor restarts an attached daemon like\n"
        "a launched one; to end its process, too: daemonctl stop --end.\n"
        "The command first waits until the process of the former supervisor has ended, because that\n"
        "supervisor restarts its daemons until then.\n"
        "An administrator may attach only what administrators or the supervisor have written: the\n"
        "command refuses a log or a listing that others may change (--trust), and asks about programs\n"
        "outside the folder App (--outside).\n"
        "Exit code 0: all are attached; 1: there was none to attach; 4: some could not be attached,\n"
        "the former supervisor still runs, or its log was set aside.");
    command.OnChosen([&exitCode, options] {
        HandOverOptions handOver;
        handOver.dryRun = options->dryRun;
        handOver.formerLog = options->formerLog;
        if (!options->outside && !options->dryRun) {
            handOver.review = AskAboutOutside;
        }
        const bool areThere = (options->from.empty() || MayBeThere(options->from)) &&
                              (options->fleet.empty() || MayBeThere(options->fleet));
        if (areThere && !options->trust && !CanBelieve({options->from, options->fleet})) {
            exitCode = kRefused;
            return;
        }
        if (!ReadFiles(*options, handOver)) {
            exitCode = kWrongUsage;
            return;
        }
        if (!areThere) {
            PrintNotThere(options->from.empty() ? options->fleet : options->from);
            exitCode = kWrongUsage;
            return;
        }
        exitCode = WithSupervisorAndLog(
            [&](SupervisorClient& supervisor) { return Reattach(supervisor, *options, handOver); });
        if (exitCode == kNoSupervisor && options->dryRun) {
            PrintUnwatched();
        }
    });
}

} // namespace vqrx::client::v0
