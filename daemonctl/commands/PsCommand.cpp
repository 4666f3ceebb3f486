#include "Commands.h"

#include "DaemonListing.h"
#include "ExitCode.h"
#include "PrintText.h"
#include "ThisMachine.h"
#include "TimeText.h"
#include "WithSupervisor.h"

#include <memory>

namespace vqrx::client::v0 {
namespace {

int Ps(bool json)
{
    const auto children = ChildrenOfSupervisor(); // first: a start is logged after it was made
    const Timeline timeline = ReadTimeline();
    const std::int64_t nowMs = NowMs();
    const SupervisorRun& run = RunOfThisMachine(timeline);
    const auto daemons = StatusOfDaemons(run, SourceOfThisMachine(), nowMs, children);
    PrintText(json ? ListingJson(daemons, nowMs, DM_VERSION)
                   : ListingText(daemons, nowMs, LocalTimeText));
    PrintNotes(daemons, run);
    return kDone;
}

} // namespace

void AddPsCommand(CLI::App& app, int& exitCode)
{
    const auto json = std::make_shared<bool>(false);
    CLI::App* const command = app.add_subcommand(
        "ps", "List the daemons: state, process, restarts, last exit, processor time, memory");
    command->alias("list")->alias("status");
    command->add_flag("--json", *json, "Print one JSON object");
    command->footer(
        "Examples:\n"
        "  daemonctl ps\n"
        "  daemonctl ps --json > before.json\n"
        "A daemon is shown as running only if the process that has its process id runs the program\n"
        "of the log and was created at the time of its start, or before it was attached. ID is -\n"
        "for a program that could never be started, and for a process that the log no longer shows\n"
        "(RESTARTS is then ?).\n"
        "12+ means that the log still shows 12 restarts and may have lost earlier ones.");
    command->callback([&exitCode, json] {
        exitCode =
            WithSupervisorAndLog([&](daemon_manager::SupervisorClient&) { return Ps(*json); });
    });
}

} // namespace vqrx::client::v0
