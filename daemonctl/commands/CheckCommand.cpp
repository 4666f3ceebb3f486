#include "Commands.h"

#include "DaemonListing.h"
#include "ExitCode.h"
#include "Expectation.h"
#include "PrintText.h"
#include "Printable.h"
#include "TextFile.h"
#include "ThisMachine.h"
#include "TimeText.h"
#include "WithSupervisor.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdint>
#include <iostream>
#include <memory>
#include <string>

namespace vqrx::client::v0 {
namespace {

constexpr const char* kFormOfList =
    "For the form of a list, with an example: daemonctl check --help";

struct CheckOptions {
    std::string file;
    std::uint32_t minUptimeSeconds = 0;
    bool json = false;
};

// Prints the errors of the list. @return whether the list has none
bool ReadExpectFile(const std::string& path, ExpectFile& file)
{
    try {
        file = ParseExpectFile(ReadTextFile(path));
    } catch (const std::exception& exception) {
        std::cerr << "daemonctl: " << exception.what() << "\n  " << kFormOfList << std::endl;
        return false;
    }
    for (const std::string& error : file.errors) {
        std::cerr << "daemonctl: " << path << ", " << Printable(error) << std::endl;
    }
    if (!file.errors.empty()) {
        std::cerr << "  " << kFormOfList << std::endl;
    }
    return file.errors.empty();
}

std::string FoundDaemonText(const DaemonStatus& daemon)
{
    return (daemon.id ? "daemon " + std::to_string(*daemon.id) + ", " : std::string()) +
           "process " + std::to_string(*daemon.processId) + ", up since " +
           LocalTimeText(daemon.process.createdMs);
}

void PrintAsText(const std::vector<ExpectationResult>& results,
                 const std::vector<DaemonStatus>& daemons)
{
    for (const ExpectationResult& result : results) {
        PrintText(
            (result.daemon ? "ok       " : "missing  ") +
            Printable(TextOf(result.program) + ": " +
                      (result.daemon ? FoundDaemonText(daemons[*result.daemon]) : result.note)) +
            "\n");
    }
}

void PrintAsJson(const std::vector<ExpectationResult>& results,
                 const std::vector<DaemonStatus>& daemons)
{
    using Json = nlohmann::ordered_json;
    Json list = Json::array();
    for (const ExpectationResult& result : results) {
        const DaemonStatus* const daemon = result.daemon ? &daemons[*result.daemon] : nullptr;
        list.push_back(
            {{"line", result.program.line},
             {"program", TextOf(result.program)},
             {"running", daemon != nullptr},
             {"id", daemon != nullptr && daemon->id ? Json(*daemon->id) : Json(nullptr)},
             {"process_id", daemon != nullptr ? Json(*daemon->processId) : Json(nullptr)},
             {"note", result.note}});
    }
    const Json report = {{"expected", std::move(list)}};
    PrintText(report.dump(2, ' ', true, Json::error_handler_t::replace) + "\n");
}

int Check(const CheckOptions& options, const ExpectFile& file)
{
    const auto [run, nowMs, daemons] = ReadDaemons(ChildrenOfSupervisor());
    const auto results = CheckExpectations(file.programs, daemons, nowMs,
                                           std::int64_t{options.minUptimeSeconds} * 1000);
    (options.json ? PrintAsJson : PrintAsText)(results, daemons);
    if (std::all_of(results.begin(), results.end(),
                    [](const ExpectationResult& result) { return result.daemon.has_value(); })) {
        return kDone;
    }
    PrintNotes(daemons, run);
    return kNothingToDo;
}

} // namespace

void AddCheckCommand(const CommandDefinition& app, int& exitCode)
{
    const auto options = std::make_shared<CheckOptions>();
    const CommandDefinition command =
        app.Command("check", "Check that a daemon runs for each program of a list");
    command.Option("--expect", options->file, "Read the list from this file, one program per line")
        .Required();
    command
        .Option("--min-uptime", options->minUptimeSeconds,
                "Count a program as missing if its process is younger than this many seconds, "
                "so that a program that ends again and again is found")
        .Decimal();
    command.Flag("--json", options->json, "Print one JSON object");
    command.Footer(
        "Examples:\n"
        "  daemonctl check --expect C:\\FW\\expected.txt\n"
        "  daemonctl check --expect C:\\FW\\expected.txt --min-uptime 60\n"
        "A list:\n"
        "  # a full path with arguments, or a file name, which fits in any folder\n"
        "  C:\\FW\\App\\video.exe --input 3\n"
        "  \"C:\\Program Files\\SNMP\\agent.exe\" \"two words\"\n"
        "  recorder.exe\n"
        "  recorder.exe\n"
        "A line without arguments fits a daemon with any arguments. Two equal lines need two\n"
        "daemons.\n"
        "Exit code 1: a program of the list does not run; 2: the list cannot be read.");
    command.OnChosen([&exitCode, options] {
        ExpectFile file;
        if (!ReadExpectFile(options->file, file)) {
            exitCode = kWrongUsage;
            return;
        }
        exitCode = BesideSupervisor([&] { return Check(*options, file); });
    });
}

} // namespace vqrx::client::v0
