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
#include <new>
#include <optional>
#include <stdexcept>
#include <utility>

namespace vqrx::client::v0 {
namespace {

struct ReportArguments : LogOptions {
    std::string output = "daemon-report.html";
};

bool WriteReport(const std::string& path, const std::string& html)
{
    if (path == "-") {
        std::cout << html; // FinishOutput tells when it does not arrive
        return true;
    }
    const std::filesystem::path name(std::u8string(path.begin(), path.end()));
    std::ofstream file(name, std::ios::binary);
    file << html << std::flush;
    return file.good();
}

int Report(const ReportArguments& arguments, const LogPath& defaultPath)
{
    std::string path = arguments.file;
    ScanSummary summary;
    std::string html;
    try {
        if (path.empty()) {
            path = defaultPath();
        }
        TimelineBuilder timeline;
        std::optional<int> offset;
        summary = ReadLogFile(path, arguments.encoding, [&](Record record) {
            if (const std::optional<int> found = ZoneOffset(record.date, record.timeMs)) {
                offset = found;
            }
            timeline.Add(std::move(record));
        });
        html = ReportHtml(MakeReportModel(timeline.Finish()), path, offset.value_or(0));
    } catch (const std::bad_alloc&) {
        TellError(arguments, "out of memory");
        return kLogUnreadable;
    } catch (const std::runtime_error& error) {
        TellError(arguments, error.what());
        return kLogUnreadable;
    }
    if (!WriteReport(arguments.output, html)) {
        TellError(arguments, arguments.output + " cannot be written");
        return kRefused;
    }
    if (arguments.output != "-") {
        std::cout << arguments.output << std::endl;
    }
    return TellDamage(arguments, path, summary);
}

} // namespace

void AddReportCommand(CLI::App& app, int& exitCode, const LogPath& path)
{
    const auto arguments = std::make_shared<ReportArguments>();
    CLI::App* const command = app.add_subcommand(
        "report", "Write an HTML page of every daemon's lives, restarts and availability");
    AddLogOptions(*command, *arguments, static_cast<bool>(path));
    command
        ->add_option("--output,-o", arguments->output,
                     "The page to write, daemon-report.html if not given; - for standard output")
        ->type_name("FILE");
    const std::string program = app.get_name();
    command->footer("Examples:\n"
                    "  " +
                    program +
                    " report --output week.html\n"
                    "  " +
                    program +
                    " report --file copy.log --output -\n"
                    "The page needs no network and no script; what a mark means appears under the\n"
                    "pointer. It covers what the log still holds.\n"
                    "Exit code 5: the log, or some lines of it, could not be read.");
    command->callback([&exitCode, arguments, path] { exitCode = Report(*arguments, path); });
}

} // namespace vqrx::client::v0
