#include "Commands.h"

#include "LogOptions.h"

#include "AtomicFile.h"
#include "ExitCode.h"
#include "LogFile.h"
#include "NextStep.h"
#include "ReportHtml.h"
#include "ReportJson.h"
#include "ReportTime.h"
#include "ScanDamage.h"
#include "ThisMachine.h"
#include "TimeText.h"
#include "TimelineBuilder.h"

#include <chrono>
#include <cstdint>
#include <exception>
#include <iostream>
#include <memory>
#include <optional>
#include <stdexcept>
#include <thread>
#include <utility>

namespace vqrx::client::v0 {
namespace {

struct ReportArguments : LogOptions {
    std::string output = "daemon-report.html";
    std::string json;               // file for the figures; empty: none
    std::uint32_t everySeconds = 0; // 0: once
};

/// The two outputs of one report.
struct MadeReport {
    std::string path; // of the log
    std::string html;
    std::string json;
    ScanSummary summary;
};

ReportMoment MomentOf(const ReportArguments& arguments, const SupervisorNow& supervisor)
{
    ReportMoment moment;
    moment.nowMs = NowMs();
    if (supervisor && arguments.file.empty()) {
        try {
            moment.supervisor = supervisor();
        } catch (const std::runtime_error&) { // then nobody knows
            moment.supervisor = SupervisorState::kUnknown;
        }
    }
    return moment;
}

void Render(const ReportArguments& arguments, const ReportModel& model, int offsetMinutes,
            MadeReport& report)
{
    report.html = ReportHtml(model, report.path, offsetMinutes, arguments.everySeconds);
    report.json = arguments.json.empty() ? "" : ReportJson(model, report.path, DM_VERSION);
}

// Finds the daemons as ps shows them. If that fails, they are as the log shows them. A supervisor
// that cannot write leaves the log of its predecessor, whose daemons are not those of now.
void FindDaemons(const DaemonsOfLog& daemons, const Timeline& timeline, ReportMoment& moment)
{
    try {
        if (daemons) {
            moment.daemons = daemons(timeline);
        }
    } catch (const LogUnreadable&) {
        moment.showsRunning = false;
    } catch (const std::runtime_error&) {
        moment.daemons.reset();
    }
}

// Looks at the processes before the log is read: the supervisor starts a process before it logs
// the start.
// @return empty if nobody can look
DaemonsOfLog LookAtDaemons(const ReportMoment& moment, const DaemonsLook& look)
{
    try {
        if (look && moment.supervisor == SupervisorState::kRunning) {
            return look();
        }
    } catch (const std::runtime_error&) { // NOLINT(bugprone-empty-catch): the log knows them, too
    }
    return {};
}

void MakeReport(const ReportArguments& arguments, const DaemonsOfLog& daemons, ReportMoment& moment,
                MadeReport& report)
{
    TimelineBuilder builder;
    std::optional<int> offset;
    report.summary = ReadLogFile(report.path, arguments.encoding, [&](Record record) {
        if (const std::optional<int> found = ZoneOffset(record.date, record.timeMs)) {
            offset = found;
        }
        builder.Add(std::move(record));
    });
    const Timeline timeline = builder.Finish();
    moment.logDamage = DescribeDamage(report.summary);
    FindDaemons(daemons, timeline, moment);
    Render(arguments, MakeReportModel(timeline, moment), offset.value_or(0), report);
}

// @param option  the option that names the file
// @return false if the file cannot be written; an error is printed
bool WriteOutput(const ReportArguments& arguments, const char* option, const std::string& path,
                 const std::string& content)
{
    if (path.empty()) {
        return true;
    }
    if (path == "-") {
        std::cout << content << std::flush; // FinishOutput reports a failure
        return true;
    }
    if (ReplaceContent(path, content)) {
        return true;
    }
    PrintError(arguments, path + " cannot be written\n  Choose another file: " + option + " FILE");
    return false;
}

// Writes the page once. @return the exit code
int Report(const ReportArguments& arguments, const LogPath& defaultPath,
           const SupervisorNow& supervisor, const DaemonsLook& look)
{
    MadeReport report;
    ReportMoment moment = MomentOf(arguments, supervisor);
    const DaemonsOfLog daemons = LookAtDaemons(moment, look);
    // WriteOutput stands outside: WithLogFile would report its exceptions as failures of the log.
    const int read = WithLogFile(
        arguments, defaultPath,
        [&](const std::string& file) {
            report.path = file;
            MakeReport(arguments, daemons, moment, report);
            return static_cast<int>(kDone);
        },
        &moment.logFailure);
    if (read != kDone) {
        if (arguments.everySeconds == 0) {
            return read;
        }
        // A page that stayed as it was would show daemons that nobody sees any more.
        Render(arguments, MakeReportModel({}, moment), 0, report);
    }
    const bool page = WriteOutput(arguments, "--output", arguments.output, report.html);
    const bool json = WriteOutput(arguments, "--json", arguments.json, report.json);
    if (!page || !json) {
        return kRefused;
    }
    return read != kDone ? read : ReportDamage(arguments, report.path, report.summary);
}

// Writes the page again and again, until the program is ended. A failure is printed and ends
// nothing: the log may be locked, the disk full, or Windows short of memory, for a moment only. The
// end of the reader of standard output ends the writing.
int ReportAgainAndAgain(const ReportArguments& arguments, const LogPath& defaultPath,
                        const SupervisorNow& supervisor, const DaemonsLook& look)
{
    for (;;) {
        try {
            static_cast<void>(Report(arguments, defaultPath, supervisor, look));
        } catch (const std::exception& error) {
            PrintError(arguments, WithNextStep(error.what()));
        }
        if (!std::cout.good()) {
            return kDone; // FinishOutput reports it
        }
        std::this_thread::sleep_for(std::chrono::seconds(arguments.everySeconds));
    }
}

int RunReport(const ReportArguments& arguments, const LogPath& defaultPath,
              const SupervisorNow& supervisor, const DaemonsLook& look)
{
    if (arguments.everySeconds != 0) {
        return ReportAgainAndAgain(arguments, defaultPath, supervisor, look);
    }
    const int exitCode = Report(arguments, defaultPath, supervisor, look);
    if (arguments.output != "-" && (exitCode == kDone || exitCode == kLogUnreadable)) {
        std::cout << arguments.output << std::endl;
    }
    return exitCode;
}

} // namespace

void AddReportCommand(const CommandDefinition& app, int& exitCode, const LogPath& path,
                      const SupervisorNow& supervisor, const DaemonsLook& daemons)
{
    const auto arguments = std::make_shared<ReportArguments>();
    const CommandDefinition command = app.Command(
        "report", "Write an HTML page with the runs, restarts and availability of each daemon");
    AddLogOptions(command, *arguments, static_cast<bool>(path));
    command
        .Option("--output,-o", arguments->output,
                "Write the page to this file; default: daemon-report.html; - for standard output")
        .Word("FILE");
    command.Option("--json", arguments->json, "Also write the figures to this file, as JSON")
        .Word("FILE");
    command
        .Option("--every", arguments->everySeconds,
                "Write again after this many seconds, until Ctrl+C; the page reloads itself")
        .Word("SECONDS")
        .Decimal();
    const std::string program = app.Name();
    command.Footer(
        "Examples:\n"
        "  " +
        program +
        " report --output week.html\n"
        "  " +
        program +
        " report --file copy.log --output -\n"
        "  " +
        program +
        " report --every 10 --output C:\\www\\daemons.html --json C:\\www\\daemons.json\n"
        "The page needs no network. The meaning of a mark appears under the pointer. The page\n"
        "covers the records that the log still holds.\n"
        "Exit code 4: the page cannot be written; 5: the log, or some lines of it, cannot\n"
        "be read.");
    command.OnChosen([&exitCode, arguments, path, supervisor, daemons] {
        exitCode = RunReport(*arguments, path, supervisor, daemons);
    });
}

} // namespace vqrx::client::v0
