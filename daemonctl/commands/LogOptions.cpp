#include "LogOptions.h"

#include "ExitCode.h"
#include "NextStep.h"
#include "ScanDamage.h"
#include "ring_format/DamagedRing.h"

#include <filesystem>
#include <iostream>
#include <new>
#include <stdexcept>
#include <system_error>

namespace vqrx::client::v0 {
namespace {

constexpr const char* kAnotherLog = "Name another log: --file FILE";
constexpr const char* kRestWasRead = "All other lines were read; there is nothing to do.";

std::string StepAfterFailure(const LogOptions& options)
{
    return options.file.empty() ? kFindOutMore : kAnotherLog;
}

} // namespace

void AddLogOptions(const CommandDefinition& command, LogOptions& options, bool hasDefault)
{
    options.program = command.NameOfProgram();
    const OptionDefinition file =
        command.Option("--file", options.file,
                       hasDefault ? "Read this log file or copy, instead of the log of this machine"
                                  : "Read this log file or copy");
    file.Word("FILE").Required(!hasDefault);
    command
        .Choice<TextEncoding>(
            "--encoding", options.encoding,
            {{"auto", TextEncoding::kAuto},
             {"ansi", TextEncoding::kAnsi},
             {"windows-1252", TextEncoding::kWindows1252},
             {"utf-8", TextEncoding::kUtf8}},
            "Read the texts in this encoding; ansi is the code page of this machine")
        .Word("NAME");
}

void AddColourOption(const CommandDefinition& command, LineOutput::Colour& colour)
{
    command
        .Choice<LineOutput::Colour>(
            "--color", colour,
            {{"auto", LineOutput::Colour::kAuto},
             {"always", LineOutput::Colour::kAlways},
             {"never", LineOutput::Colour::kNever}},
            "Colour the lines; auto does on a terminal, unless NO_COLOR is set")
        .Word("WHEN");
}

int WithLogFile(const LogOptions& options, const LogPath& defaultPath,
                const std::function<int(const std::string& path)>& read, std::string* failure)
{
    std::string text;
    try {
        return read(options.file.empty() ? defaultPath() : options.file);
    } catch (const std::bad_alloc&) {
        text = "out of memory";
    } catch (const std::runtime_error& error) {
        text = error.what();
    }
    PrintError(options, WithNextStep(text, StepAfterFailure(options)));
    if (failure != nullptr) {
        *failure = text;
    }
    return kLogUnreadable;
}

std::string DescribeLogsSetAside(const LogOptions& options, const std::string& path)
{
    std::string text;
    for (const std::string& damaged : system::ring_format::v1::DamagedRingsOf(path)) {
        std::error_code error; // a file that cannot be looked at is not named
        if (std::filesystem::is_regular_file(std::u8string(damaged.begin(), damaged.end()),
                                             error)) {
            text += "\n  A damaged log was set aside; to read it: " + options.program +
                    " log --file \"" + damaged + "\"";
        }
    }
    return text;
}

void PrintError(const LogOptions& options, const std::string& text)
{
    std::cout.flush();
    std::cerr << options.program << ": " << text << std::endl;
}

int ReportDamage(const LogOptions& options, const std::string& path, const ScanSummary& summary)
{
    if (summary.IsSound()) {
        return kDone;
    }
    const bool isOtherFile = !options.file.empty() && summary.records == 0;
    PrintError(options, WithNextStep(path + ": " + DescribeDamage(summary),
                                     options.file.empty() ? kFindOutMore
                                     : isOtherFile        ? kAnotherLog
                                                          : kRestWasRead));
    return kLogUnreadable;
}

} // namespace vqrx::client::v0
