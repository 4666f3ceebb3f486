#include "Commands.h"

#include "LogOptions.h"

#include "ExitCode.h"
#include "FollowLog.h"
#include "InputFile.h"
#include "NextStep.h"
#include "RecordFolder.h"
#include "ScanDamage.h"

#include <chrono>
#include <cstdint>
#include <exception>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>

namespace vqrx::client::v0 {
namespace {

constexpr std::uint64_t kMebibyte = std::uint64_t{1024} * 1024;
constexpr std::int64_t kHourOfRecordsMs = std::int64_t{60} * 60 * 1000;

struct RecordArguments : LogOptions {
    std::string output;
    std::uint32_t fileMebibytes = 16;
    std::uint32_t fileHours = 24;
    std::uint32_t folderMebibytes = 1024;
    bool once = false;
    bool trust = false;
};

std::string DescribeGap(const NewRecords& found)
{
    if (found.isNewLog) {
        return "the supervisor began a new log; records may be missing here";
    }
    return (found.lostCount ? std::to_string(*found.lostCount) : "an unknown number of") +
           (found.lostCount == 1U ? " record was" : " records were") +
           " overwritten before they could be recorded";
}

// @param first  number of the first record of the log, at least 1
std::string DescribeLateBegin(std::int64_t first)
{
    const std::string number = std::to_string(first);
    return "the log begins with record " + number + "; the " +
           (first == 1 ? "earlier one was" : number + " earlier ones were") +
           " overwritten before the recording began";
}

/// Thrown by a look that cannot write; a look that cannot read throws std::runtime_error.
class FolderNotWritten : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

template <typename Write>
void OrNotWritten(const Write& write)
{
    try {
        write();
    } catch (const std::runtime_error& error) {
        throw FolderNotWritten(error.what());
    }
}

// Names the damaged logs that the supervisor has set aside. They hold records that are not
// recorded: the recorder may have come too late for them.
// @param named  the logs that the last call found; the same logs are not printed again
void NameLogsSetAside(const RecordArguments& arguments, const std::string& path, std::string& named)
{
    const std::string found = DescribeLogsSetAside(arguments, path);
    if (!found.empty() && found != named) {
        PrintError(arguments, "the supervisor could not read its log and began a new one" + found);
    }
    named = found;
}

// Adds a record. If it is the first one of the folder and not the first one of the supervisor, says
// how many came before it.
void AddToFolder(RecordFolder& folder, const RecordArguments& arguments, const Record& record)
{
    const bool isFirst = !folder.Last();
    folder.Add(record);
    if (isFirst && record.number.value_or(0) > 0) {
        const std::string text = DescribeLateBegin(*record.number);
        PrintError(arguments, text);
        folder.AddRemark(text);
    }
}

// Follows the log until it cannot be read.
// @param isMissing  becomes false when the log was read
// @param setAside   see NameLogsSetAside
// @return the exit code: kLogUnreadable if a part of the log cannot be read
int FollowInto(RecordFolder& folder, const RecordArguments& arguments, const std::string& path,
               bool& isMissing, std::string& setAside)
{
    static_cast<void>(InputFile::Open(path)); // before many records are read: it may be missing
    FollowSettings settings;
    settings.shown = folder.Newest();
    FollowEvents events;
    events.record = [&](const Record& record) {
        OrNotWritten([&] { AddToFolder(folder, arguments, record); });
    };
    events.gap = [&](const NewRecords& found) {
        const std::string text = DescribeGap(found);
        PrintError(arguments, text);
        OrNotWritten([&] { folder.AddRemark(text); });
    };
    events.goOn = [&] {
        isMissing = false;
        NameLogsSetAside(arguments, path, setAside);
        OrNotWritten([&] { folder.Flush(); });
        return !arguments.once;
    };
    const ScanSummary summary = FollowLog(path, arguments.encoding, settings, events);
    if (!summary.IsSound()) {
        OrNotWritten([&] {
            folder.AddRemark("the log is damaged: " + DescribeDamage(summary));
            folder.Flush();
        });
    }
    return ReportDamage(arguments, path, summary);
}

int RecordLog(const RecordArguments& arguments, const std::string& path)
{
    RecordFolderLimits limits;
    limits.fileBytes = arguments.fileMebibytes * kMebibyte;
    limits.fileMs = arguments.fileHours * kHourOfRecordsMs;
    limits.folderBytes = arguments.folderMebibytes * kMebibyte;
    bool isMissing = false;             // said once, until the log is back
    std::string setAside;               // the damaged logs that were named
    std::optional<RecordFolder> folder; // held also while the log is missing, with its lock
    for (;;) {
        try {
            OrNotWritten([&] {
                if (folder) {
                    folder->Flush();
                } else {
                    folder.emplace(arguments.output, limits);
                }
            });
            return FollowInto(*folder, arguments, path, isMissing, setAside);
        } catch (const FolderNotWritten& error) {
            PrintError(arguments,
                       WithNextStep(error.what(), "Choose another folder: --output FOLDER"));
            return kRefused;
        } catch (const std::exception& error) {
            if (arguments.once) {
                throw;
            }
            if (!isMissing) {
                PrintError(arguments, WithNextStep(std::string(error.what()) + "; waiting for it"));
            }
            isMissing = true;
        }
        std::this_thread::sleep_for(std::chrono::seconds(1));
    }
}

} // namespace

void AddRecordCommand(const CommandDefinition& app, int& exitCode, const LogPath& path,
                      const FolderTrust& trust)
{
    const auto arguments = std::make_shared<RecordArguments>();
    const CommandDefinition command = app.Command(
        "record", "Record the log into a folder of files that keeps what the log overwrites");
    AddLogOptions(command, *arguments, static_cast<bool>(path));
    command.Option("--output", arguments->output, "Record into this folder")
        .Word("FOLDER")
        .Required();
    command
        .Option("--max-file", arguments->fileMebibytes,
                "Begin a new file after this many MiB; default: 16")
        .Word("MIB")
        .Decimal()
        .Between(1U, 4096U);
    command
        .Option("--max-age", arguments->fileHours,
                "Begin a new file after this many hours; default: 24")
        .Word("HOURS")
        .Decimal()
        .Between(1U, 8784U);
    command
        .Option("--max-total", arguments->folderMebibytes,
                "Remove the oldest files if all together exceed this many MiB; default: 1024")
        .Word("MIB")
        .Decimal()
        .Between(1U, 1048576U);
    command.Flag("--once", arguments->once,
                 "Record what the log holds now, and end; for a scheduled task");
    if (trust) {
        command.Flag("--trust", arguments->trust,
                     "Record into a folder although others than administrators may change it");
    }
    const std::string program = app.Name();
    command.Footer(
        "Examples:\n"
        "  " +
        program +
        " record --output D:\\evidence\n"
        "  " +
        program +
        " log --file D:\\evidence --program video.exe\n"
        "The command continues where it ended, without a gap or a repetition. If the log has\n"
        "overwritten records meanwhile, a line in the files and on standard error says how many.\n"
        "log, report and ps --log read the folder in place of the log.\n" +
        (trust ? "An administrator's record makes a missing folder for administrators alone, and\n"
                 "refuses a folder or a file in it that others may change (--trust).\n"
               : "") +
        "Exit code 4: the folder cannot be written, or another recorder writes into it" +
        (trust ? ", or others\nmay change it" : "") +
        "; 5: the log, or a part of it, cannot be read\n(with --once).");
    command.OnChosen([&exitCode, arguments, path, trust] {
        if (trust && !arguments->trust && !trust(arguments->output)) {
            exitCode = kRefused;
            return;
        }
        exitCode = WithLogFile(
            *arguments, path, [&](const std::string& file) { return RecordLog(*arguments, file); });
    });
}

} // namespace vqrx::client::v0
