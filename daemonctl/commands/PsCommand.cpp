#include "Commands.h"

#include "DaemonListing.h"
#include "ExitCode.h"
#include "LineOutput.h"
#include "LiveScreen.h"
#include "LogOptions.h"
#include "PrintText.h"
#include "Printable.h"
#include "ProtectedObjects.h"
#include "PsWatch.h"
#include "StatusTable.h"
#include "ThisMachine.h"
#include "TimeText.h"
#include "Unwatched.h"
#include "WithSupervisor.h"

#include <windows.h>

#include <cstdint>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace vqrx::client::v0 {
namespace {

constexpr std::uint32_t kUsualSecondsBetweenLooks = 2;
constexpr std::uint32_t kMostSecondsBetweenLooks = 86400;

struct PsOptions {
    bool json = false;
    std::string output;             // empty: standard output
    std::string log;                // in place of the log of this machine; empty: that log
    std::uint32_t watchSeconds = 0; // 0: not given
    LineOutput::Colour colour = LineOutput::Colour::kAuto;
};

// Writes a listing that only administrators and this user may change: reattach believes it.
int WriteListing(const std::string& path, const std::string& listing)
{
    const std::uint32_t error = WriteProtectedFile(path, listing);
    if (error == 0) {
        return kDone;
    }
    std::cerr << "daemonctl: " << Printable(path)
              << (error == ERROR_FILE_EXISTS
                      ? " exists already; it is not overwritten, because it may be somebody's"
                      : " cannot be written (Windows error " + std::to_string(error) + ")")
              << "\n  Choose another file: --output FILE" << std::endl;
    return kRefused;
}

void PrintTable(const std::vector<DaemonStatus>& daemons, std::int64_t nowMs,
                LineOutput::Colour colour)
{
    TableStyle style;
    style.nowMs = nowMs;
    style.timeText = LocalTimeText;
    if (const std::optional<ConsoleSize> size = SizeOfConsole()) {
        style.width = size->width - 1; // a full line would be followed by an empty one
    }
    const auto output = MakeLineOutput(colour);
    for (const TableLine& line : TableOf(daemons, style)) {
        output->Write(line.level, line.text);
    }
    if (!output->Flush()) {
        std::cout.setstate(std::ios::badbit); // a console does not set it; FinishOutput reports it
    }
}

// A folder that nobody records into any more shows an earlier supervisor.
void RequireRunningSupervisor(const std::string& log, const Timeline& timeline)
{
    if (!log.empty() && FindRunOfThisMachine(timeline) == nullptr) {
        throw LogUnreadable(log + " does not show the supervisor that is running; to read the log "
                                  "itself: daemonctl ps");
    }
}

int Ps(const PsOptions& options)
{
    // First the processes: the supervisor makes a process before it logs the start.
    const auto children = ChildrenOfSupervisor();
    const Timeline timeline = ReadTimeline(options.log);
    RequireRunningSupervisor(options.log, timeline);
    const auto [run, nowMs, daemons] = DaemonsIn(timeline, children);
    if (!options.output.empty()) {
        return WriteListing(options.output, ListingJson(daemons, nowMs, DM_VERSION));
    }
    if (options.json) {
        PrintText(ListingJson(daemons, nowMs, DM_VERSION));
    } else {
        PrintTable(daemons, nowMs, options.colour);
    }
    PrintNotes(daemons, run);
    PrintUnwatchedOf(timeline);
    return kDone;
}

} // namespace

void AddPsCommand(const CommandDefinition& app, int& exitCode)
{
    const auto options = std::make_shared<PsOptions>();
    const CommandDefinition command = app.Command(
        "ps", "List the daemons: state, process, restarts, last exit, processor time, memory");
    command.Alias("list").Alias("status");
    const OptionDefinition json = command.Flag("--json", options->json, "Print one JSON object");
    const OptionDefinition watch =
        command.Option("--watch", options->watchSeconds,
                       "Show the daemons and the newest records again and again, until Ctrl+C; "
                       "default: every 2 seconds");
    watch.WithOrWithoutValue()
        .Word("[SECONDS]")
        .Decimal()
        .Between(1, kMostSecondsBetweenLooks)
        .Excludes(json);
    command
        .Option("--log", options->log,
                "Read this folder, which record has made, in place of the log")
        .Word("FOLDER")
        .Excludes(watch);
    AddColourOption(command, options->colour);
    command
        .Option("--output,-o", options->output,
                "Write the JSON object to this new file, which only administrators and this "
                "user may read and write")
        .Word("FILE")
        .Excludes(watch);
    command.Footer(
        "Examples:\n"
        "  daemonctl ps\n"
        "  daemonctl ps --watch\n"
        "  daemonctl ps --output C:\\FW\\Logs\\before.json\n"
        "A daemon is shown as running only if the process that has its process id runs the program\n"
        "of the log and was created at the time of its start, or before it was attached. ID is -\n"
        "for a program that could never be started, and for a process that the log no longer shows\n"
        "(RESTARTS is then ?).\n"
        "12+ means that the log still shows 12 restarts and may have lost earlier ones. For a daemon\n"
        "in a crash loop, 47 (41 in 1 h) means 47 restarts, 41 of them in the last hour. For one that\n"
        "cannot start, 0 (47 failed) means that 47 starts have failed.");
    command.OnChosen([&exitCode, options, watch] {
        if (watch.IsGiven()) {
            const std::uint32_t seconds =
                options->watchSeconds != 0 ? options->watchSeconds : kUsualSecondsBetweenLooks;
            exitCode = WatchDaemons(seconds, options->colour);
            return;
        }
        exitCode = BesideSupervisor([&] { return Ps(*options); });
        if (exitCode == kNoSupervisor && !options->json) {
            PrintUnwatched();
        }
    });
}

} // namespace vqrx::client::v0
