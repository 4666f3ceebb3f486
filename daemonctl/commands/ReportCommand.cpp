#include "Commands.h"

#include "LogOptions.h"

#include "ExitCode.h"
#include "LogFile.h"
#include "ReportHtml.h"
#include "ReportTime.h"
#include "TimelineBuilder.h"

#include <filesystem>
#include <fstream>
#include <iostream>
#include <memory>
#include <optional>
#include <utility>

namespace vqrx::client::v0 {
namespace {

struct ReportArguments : LogOptions {
    std::string output = "daemon-report.html";
};

// @param path  "-" for standard output
// @return false if the file cannot be written
bool WriteReport(const std::string& path, const std::string& html)
{
    if (path == "-") {
        std::cout << html; // FinishOutput reports a failure
        return true;
    }
    const std::filesystem::path name(std::u8string(path.begin(), path.end()));
    std::ofstream file(name, std::ios::binary);
    file << html << std::flush;
    return file.good();
}

std::string MakePage(const ReportArguments& arguments, const std::string& path,
                     ScanSummary& summary)
{
    TimelineBuilder timeline;
    std::optional<int> offset;
    summary = ReadLogFile(path, arguments.encoding, [&](Record record) {
        if (const std::optional<int> found = ZoneOffset(record.date, record.timeMs)) {
            offset = found;
        }
        timeline.Add(std::move(record));
    });
    return ReportHtml(MakeReportModel(timeline.Finish()), path, offset.value_or(0));
}

int Report(const ReportArguments& arguments, const LogPath& defaultPath)
{
    std::string path;
    std::string html;
    ScanSummary summary;
    // An exception of WriteReport below is no failure to read the log, and passes.
    const int read = WithLogFile(arguments, defaultPath, [&](const std::string& file) {
        path = file;
        html = MakePage(arguments, path, summary);
        return static_cast<int>(kDone);
    });
    if (read != kDone) {
        return read;
    }
    if (!WriteReport(arguments.output, html)) {
        PrintError(arguments, arguments.output + " cannot be written");
        return kRefused;
    }
    if (arguments.output != "-") {
        std::cout << arguments.output << std::endl;
    }
    return ReportDamage(arguments, path, summary);
}

} // namespace

void AddReportCommand(CLI::App& app, int& exitCode, const LogPath& path)
{
    const auto arguments = std::make_shared<ReportArguments>();
    CLI::App* const command = app.add_subcommand(
        "report", "Write an HTML page with the runs, restarts and availability of each daemon");
    AddLogOptions(*command, *arguments, static_cast<bool>(path));
    command
        ->add_option(
            "--output,-o", arguments->output,
            "Write the page to this file; default: daemon-report.html; - for standard output")
        ->type_name("FILE");
    const std::string program = app.get_name();
    command->footer(
        "Examples:\n"
        "  " +
        program +
        " report --output week.html\n"
        "  " +
        program +
        " report --file copy.log --output -\n"
        "The page needs no network and no script. The meaning of a mark appears under the\n"
        "pointer. The page covers the records that the log still holds.\n"
        "Exit code 4: the page cannot be written; 5: the log, or some lines of it, cannot\n"
        "be read.");
    command->callback([&exitCode, arguments, path] { exitCode = Report(*arguments, path); });
}

} // namespace vqrx::client::v0
