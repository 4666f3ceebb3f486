#include "Commands.h"

#include "AtomicFile.h"
#include "ExitCode.h"
#include "InstalledPaths.h"
#include "LogFile.h"
#include "MetricsText.h"
#include "NextStep.h"
#include "PrintText.h"
#include "Printable.h"
#include "SupervisorProcesses.h"
#include "ThisMachine.h"
#include "TimeText.h"
#include "TimelineBuilder.h"
#include "WithSupervisor.h"

#include <fcntl.h>
#include <io.h>

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <iostream>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace vqrx::client::v0 {
namespace {

struct MetricsOptions {
    std::string output; // empty: standard output
    std::uint32_t everySeconds = 0;
};

// Reads the log. @return its timeline; an empty one if it cannot be read
Timeline ReadLogFor(MachineMetrics& machine)
{
    try {
        TimelineBuilder builder;
        const ScanSummary summary =
            ReadLogFile(DefaultLogPath(), TextEncoding::kAuto,
                        [&](Record record) { builder.Add(std::move(record)); });
        Timeline timeline = builder.Finish();
        machine.logReadable = true;
        machine.logDamaged = !summary.IsSound() || !DamagedLogs().empty();
        for (const Gap& gap : timeline.gaps) {
            machine.queueOverflows += gap.kind == GapKind::kQueueOverflow ? 1 : 0;
            machine.recordsMissing += gap.count;
        }
        return timeline;
    } catch (const std::runtime_error&) {
        return {};
    }
}

std::string MakeMetrics()
{
    MachineMetrics machine;
    machine.version = DM_VERSION;
    machine.supervisorUp = IsSupervisorThere();
    // Before the log is read: the supervisor starts a process before it logs the start.
    const std::vector<ProcessFacts> children =
        machine.supervisorUp ? ChildrenOfSupervisor() : std::vector<ProcessFacts>();
    const Timeline timeline = ReadLogFor(machine);
    machine.nowMs = NowMs();
    const std::vector<ProcessFacts> supervisors = SupervisorProcesses().Running();
    if (supervisors.size() == 1 && supervisors.front().state == ProcessFacts::State::kRunning) {
        machine.supervisor = supervisors.front();
    }
    const SupervisorRun* const run =
        machine.supervisorUp ? FindRunOfThisMachine(timeline) : nullptr;
    if (run == nullptr) {
        // A log that does not show the supervisor which runs says nothing about its daemons.
        machine.logReadable = machine.logReadable && !machine.supervisorUp;
        return MetricsText(machine, {});
    }
    machine.latePasses = CountLatePasses(*run);
    return MetricsText(machine,
                       StatusOfDaemons(*run, SourceOfThisMachine(), machine.nowMs, children));
}

int WriteMetrics(const MetricsOptions& options)
{
    const std::string text = MakeMetrics();
    if (options.output.empty()) {
        _setmode(_fileno(stdout), _O_BINARY); // the format knows no carriage return
        PrintText(text);
        return kDone;
    }
    if (!ReplaceContent(options.output, text)) {
        std::cerr << "daemonctl: " << options.output << " cannot be written\n"
                  << "  Choose another file: --output FILE" << std::endl;
        return kRefused;
    }
    return kDone;
}

void WarnOfName(const std::string& output)
{
    if (!output.empty() && !output.ends_with(".prom")) {
        std::cerr << "daemonctl: warning: the name of " << Printable(output)
                  << " does not end with .prom, so a textfile collector does not read it\n"
                     "  Choose another name: --output FILE"
                  << std::endl;
    }
}

// A failure is printed and ends nothing: a disk may be full, or Windows short of memory, for a
// moment only. The end of the reader of standard output ends the writing.
int WriteMetricsAgainAndAgain(const MetricsOptions& options)
{
    for (;;) {
        try {
            static_cast<void>(WriteMetrics(options));
        } catch (const std::exception& error) {
            std::cerr << "daemonctl: " << WithNextStep(error.what()) << std::endl;
        }
        if (!std::cout.good()) {
            return kDone; // FinishOutput reports it
        }
        std::this_thread::sleep_for(std::chrono::seconds(options.everySeconds));
    }
}

} // namespace

void AddMetricsCommand(const CommandDefinition& app, int& exitCode)
{
    const auto options = std::make_shared<MetricsOptions>();
    const CommandDefinition command =
        app.Command("metrics", "Write metrics of supervisor and daemons for a monitoring system");
    command
        .Option("--output", options->output,
                "Replace this file in one step; its name should end with .prom")
        .Word("FILE");
    command
        .Option("--every", options->everySeconds,
                "Write again after this many seconds, until Ctrl+C")
        .Word("SECONDS")
        .Decimal();
    command.Footer(
        "Examples:\n"
        "  daemonctl metrics\n"
        "  daemonctl metrics --every 15 --output C:\\metrics\\daemonmanager.prom\n"
        "The text is OpenMetrics, as the textfile collectors of exporters read it. Exit code 0,\n"
        "also if no supervisor runs: daemonmanager_up is 0 then. 4: the file cannot be written.");
    command.OnChosen([&exitCode, options] {
        WarnOfName(options->output);
        exitCode = options->everySeconds != 0 ? WriteMetricsAgainAndAgain(*options)
                                              : WriteMetrics(*options);
    });
}

} // namespace vqrx::client::v0
