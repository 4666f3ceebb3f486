#include "Commands.h"

#include "DaemonListing.h"
#include "ExitCode.h"
#include "PrintText.h"
#include "ThisMachine.h"
#include "TimeText.h"
#include "WithSupervisorAndLog.h"

#include <memory>

namespace vqrx::client::v0 {
namespace {

int Ps(bool json)
{
    const Timeline timeline = ReadTimeline();
    const std::int64_t nowMs = NowMs();
    const auto daemons = StatusOfDaemons(RunOfThisMachine(timeline), SourceOfThisMachine(), nowMs,
                                         ChildrenOfSupervisor());
    PrintText(json ? ListingJson(daemons, nowMs, DM_VERSION)
                   : ListingText(daemons, nowMs, LocalTimeText));
    return kDone;
}

} // namespace

void AddPsCommand(CLI::App& app, int& exitCode)
{
    const auto json = std::make_shared<bool>(false);
    CLI::App* const command = app.add_subcommand(
        "ps", "List the daemons: state, process, restarts, last exit, processor and memory");
    command->add_flag("--json", *json, "One JSON object");
    command->footer(
        "Examples:\n"
        "  daemonctl ps\n"
        "  daemonctl ps --json > before.json\n"
        "A daemon is running only if the process of its id in the log is still that process:\n"
        "program and time of creation are compared. ID - stands for a program that could never\n"
        "be started, or for a process of which the log no longer tells (RESTARTS is ? then).\n"
        "12+ restarts are those that the log still shows.");
    command->callback([&exitCode, json] {
        exitCode =
            WithSupervisorAndLog([&](daemon_manager::SupervisorClient&) { return Ps(*json); });
    });
}

} // namespace vqrx::client::v0
