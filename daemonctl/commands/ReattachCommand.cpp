#include "Commands.h"

#include "DecimalNumber.h"
#include "ExitCode.h"
#include "HeldProcess.h"
#include "PrintText.h"
#include "Printable.h"
#include "Reattachment.h"
#include "ShutdownProgress.h"
#include "SupervisorProcesses.h"
#include "TextFile.h"
#include "ThisMachine.h"
#include "WithSupervisor.h"

#include <windows.h>

#include <algorithm>
#include <cstdint>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

namespace vqrx::client::v0 {
namespace {

using daemon_manager::SupervisorClient;
using Plan = FormerDaemon::Plan;

constexpr DWORD kAskAgainMs = 100;
constexpr ULONGLONG kLogPatienceMs = 10000;
// The former supervisor's own limits are 90 s for calls of clients and 10 s for leaving COM.
constexpr std::uint32_t kFormerTimeoutSeconds = 120;

struct ReattachOptions {
    std::string from;
    bool dryRun = false;
    bool noWait = false;
    std::uint32_t timeoutSeconds = kFormerTimeoutSeconds;
};

// A former supervisor restarts daemons until it ends, although clients find it no longer. So its
// process must end before another supervisor gets its daemons. One process may run: the supervisor
// that answers, which is the youngest.
// @return whether the former supervisor has ended within the time
bool WaitForFormerSupervisor(std::uint32_t timeoutSeconds)
{
    const SupervisorProcesses processes;
    std::vector<ProcessFacts> former = processes.Running();
    if (former.size() <= 1) {
        return true;
    }
    former.pop_back();
    std::cerr << "daemonctl: waiting until the former supervisor has ended: " << NamesOf(former)
              << std::endl;
    if (processes.WaitUntilAtMost(1, std::uint64_t{timeoutSeconds} * 1000)) {
        return true;
    }
    std::cerr
        << "daemonctl: it still runs after " << timeoutSeconds
        << " s; nothing was attached, because two supervisors would restart the same daemons\n"
           "  End the process. If it is no supervisor: daemonctl reattach --no-wait"
        << std::endl;
    return false;
}

std::string NameOf(const FormerDaemon& former)
{
    std::string name = former.id ? "daemon " + std::to_string(*former.id) : "a former daemon";
    if (former.processId) {
        name += ", process " + std::to_string(*former.processId);
    }
    return name + " (" + Printable(former.command) + "): ";
}

// The record of an attach reaches the log a moment after the call. The next run of this command
// reads the log, and would attach the process a second time without the record.
// @return false if the log does not show the daemon within the time
bool WaitForLog(std::uint32_t daemonId)
{
    const ULONGLONG start = GetTickCount64();
    for (;;) {
        const Timeline timeline = ReadTimeline();
        if (RunOfThisMachine(timeline).Find(daemonId) != nullptr) {
            return true;
        }
        if (GetTickCount64() - start > kLogPatienceMs) {
            return false;
        }
        Sleep(kAskAgainMs);
    }
}

void PrintLost(const FormerDaemon& former, const std::string& why)
{
    std::cerr << "daemonctl: " << NameOf(former) << Printable(why)
              << "\n  To run the program again: daemonctl launch ..." << std::endl;
}

// The supervisor receives only a process id, and the plan may be old: another process can have the
// id by now. So this function holds the process open, which reserves its id, and checks it again.
// @return whether the supervisor attached the process
bool AttachFormer(SupervisorClient& supervisor, const FormerDaemon& former)
{
    const HeldProcess process(*former.processId);
    const ProcessFacts facts = process.Facts();
    const ProcessFit fit = FitPlan(former, facts);
    if (fit != ProcessFit::same) {
        PrintLost(former, DescribeMisfit(fit, facts));
        return false;
    }
    const daemon_manager::DaemonRequest answer = supervisor.Attach(*former.processId);
    if (!answer.done) {
        std::cerr << "daemonctl: " << NameOf(former)
                  << "the supervisor could not attach it; to find the reason: daemonctl doctor"
                  << std::endl;
        return false;
    }
    PrintText(NameOf(former) + "attached as daemon " + std::to_string(answer.daemonId) + "\n");
    if (former.service) {
        PrintText("  a service; its arguments for a restart are not known. To give them: "
                  "daemonctl detach " +
                  std::to_string(answer.daemonId) + ", daemonctl attach " +
                  std::to_string(*former.processId) + " ARG...\n");
    }
    if (!WaitForLog(answer.daemonId)) {
        std::cerr << "daemonctl: the log does not show it yet: do not repeat this command until "
                     "daemonctl ps shows the daemon"
                  << std::endl;
    }
    return true;
}

struct Count {
    std::size_t attached = 0;
    std::size_t already = 0;
    std::size_t lost = 0;
};

void Carry(SupervisorClient& supervisor, const FormerDaemon& former, bool dryRun, Count& count)
{
    switch (former.plan) {
    case Plan::already:
        ++count.already;
        PrintText(NameOf(former) + "is daemon " + std::to_string(*former.newId) + " already\n");
        return;
    case Plan::lost:
        ++count.lost;
        PrintLost(former, former.note);
        return;
    case Plan::attach:
        break;
    }
    if (dryRun) {
        ++count.attached;
        PrintText(NameOf(former) + "would be attached\n");
    } else {
        ++(AttachFormer(supervisor, former) ? count.attached : count.lost);
    }
}

int Reattach(SupervisorClient& supervisor, const ReattachOptions& options,
             const std::vector<ListedProcess>& listed)
{
    if (!options.noWait && !WaitForFormerSupervisor(options.timeoutSeconds)) {
        return kRefused;
    }
    const Timeline timeline = ReadTimeline();
    const auto plan =
        PlanReattachment(timeline, RunOfThisMachine(timeline), listed, SourceOfThisMachine());
    Count count;
    for (const FormerDaemon& former : plan) {
        Carry(supervisor, former, options.dryRun, count);
    }
    PrintText(std::to_string(count.attached) + (options.dryRun ? " to attach, " : " attached, ") +
              std::to_string(count.already) + " already, " + std::to_string(count.lost) + " not\n");
    if (count.lost != 0) {
        return kRefused;
    }
    return count.attached != 0 ? kDone : kNothingToDo;
}

} // namespace

void AddReattachCommand(CLI::App& app, int& exitCode)
{
    const auto options = std::make_shared<ReattachOptions>();
    CLI::App* const command = app.add_subcommand(
        "reattach", "Attach the running daemons of the former supervisor, after an upgrade");
    command->add_option("--from", options->from,
                        "Read the daemons from this file, which ps --json made before the former "
                        "supervisor ended");
    command->add_flag("--dry-run", options->dryRun,
                      "Print what the command would do, and do nothing");
    CLI::Option* const noWait =
        command->add_flag("--no-wait", options->noWait,
                          "Do not wait for the end of other processes named DaemonManager.exe");
    command
        ->add_option("--timeout", options->timeoutSeconds,
                     "Wait at most this many seconds for the end of the former supervisor; "
                     "default: 120")
        ->transform(DecimalNumber())
        ->excludes(noWait);
    command->footer(
        "Examples:\n"
        "  daemonctl ps --json > before.json\n"
        "  daemonctl exit\n"
        "  (replace the program, start it)\n"
        "  daemonctl reattach --from before.json\n"
        "Without --from the command finds the daemons in the log; it does not find a daemon whose\n"
        "start the log no longer shows. It attaches a process only if its program and its time of\n"
        "creation show that it is still the process of the daemon. The supervisor restarts an\n"
        "attached daemon like a launched one, but daemonctl stop does not end its process. To let\n"
        "the daemon go, use daemonctl detach.\n"
        "The command first waits until the process of the former supervisor has ended, because that\n"
        "supervisor restarts its daemons until then.\n"
        "Exit code 0: all are attached; 1: there was none to attach; 4: some could not be attached,\n"
        "or the former supervisor still runs.");
    command->callback([&exitCode, options] {
        std::vector<ListedProcess> listed;
        try {
            if (!options->from.empty()) {
                listed = ParseListing(ReadTextFile(options->from));
            }
        } catch (const std::exception& exception) {
            std::cerr << "daemonctl: " << options->from << ": " << exception.what() << std::endl;
            exitCode = kWrongUsage;
            return;
        }
        exitCode = WithSupervisorAndLog(
            [&](SupervisorClient& supervisor) { return Reattach(supervisor, *options, listed); });
    });
}

} // namespace vqrx::client::v0
