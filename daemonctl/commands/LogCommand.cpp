#include "Commands.h"

#include "LogOptions.h"

#include "ExitCode.h"
#include "ExpectFile.h"
#include "FollowLog.h"
#include "LineOutput.h"
#include "RecordFilter.h"
#include "RecordFolder.h"
#include "RecordText.h"
#include "TimeText.h"

#include <cstddef>
#include <deque>
#include <exception>
#include <iostream>
#include <memory>
#include <utility>

namespace vqrx::client::v0 {
namespace {

constexpr int kEveryLevel = kDetailRecord;

struct LogArguments : LogOptions {
    bool follow = false;
    bool json = false;
    int level = kEveryLevel;
    std::string since;
    std::string grep;
    std::string daemonProgram; // empty: the program of the daemon does not count
    std::optional<std::uint32_t> daemonId;
    std::optional<std::uint64_t> tail; // lines; nothing: all
    LineOutput::Colour colour = LineOutput::Colour::kAuto;
};

RecordFilter FilterOf(const LogArguments& arguments)
{
    RecordFilter filter;
    if (arguments.level < kEveryLevel) {
        filter.level = arguments.level;
    }
    if (!arguments.since.empty()) {
        filter.sinceMs = ParseMoment(arguments.since, NowMs());
    }
    filter.daemonId = arguments.daemonId;
    if (!arguments.daemonProgram.empty()) {
        filter.command = [program = ExpectedProgram{0, arguments.daemonProgram, {}}](
                             const std::string& command) { return IsCommandOf(program, command); };
    }
    filter.contains = arguments.grep;
    return filter;
}

/// Ends the reading of a log, which may be long: standard output takes no more.
class OutputEnded : public std::exception {};

/// Writes the records that the operator asked for. With --tail it keeps the last lines in memory
/// until the end of the log file is reached.
class Printer {
public:
    Printer(const LogArguments& arguments, const std::string& path, LineOutput& output)
        : arguments_(arguments)
        , path_(path)
        , filter_(FilterOf(arguments))
        , output_(output)
        , tail_(arguments.tail.has_value())
        , attributor_([this](const AttributedRecord& record) { Take(record); })
    {
    }

    /// @throws OutputEnded
    void Add(Record record)
    {
        if (!std::cout.good()) {
            throw OutputEnded();
        }
        added_ = true;
        if (!std::exchange(begun_, true)) {
            WarnOfEarlierTime(record);
        }
        attributor_.Add(std::move(record));
    }

    /// Writes a line about records that are missing before the next one.
    void Lost(const NewRecords& found)
    {
        attributor_.Flush();
        if (arguments_.json) {
            output_.Write(-1, found.isNewLog ? NewLogJson() : OverwrittenJson(found.lostCount));
            return;
        }
        if (found.isNewLog) {
            output_.Write(-1, "[\xE2\x80\xA6 the log was begun anew \xE2\x80\xA6]");
            return;
        }
        const std::string count = found.lostCount ? std::to_string(*found.lostCount)
                                                  : std::string("an unknown number of");
        output_.Write(-1, "[\xE2\x80\xA6 " + count +
                              (found.lostCount == 1U ? " record" : " records") +
                              " overwritten \xE2\x80\xA6]");
    }

    /// Call it after each look at the file. The record of an end waits for the record of the next
    /// start, which names the daemon. If a look brings no record, the end no longer waits.
    /// @return false if output was lost
    bool Looked()
    {
        if (!std::exchange(added_, false)) {
            attributor_.Flush();
        }
        return FlushOutput();
    }

    /// Writes everything that waits. If a daemon or program was asked for and no record is shown,
    /// says so: its name may be misspelt.
    /// @return false if output was lost
    bool Finish()
    {
        attributor_.Flush();
        if (!accepted_ && begun_ && (filter_.daemonId || filter_.command)) {
            PrintError(arguments_,
                       "no record fits\n  To see all records: " + arguments_.program + " log");
        }
        return FlushOutput();
    }

private:
    /// Warns if the log begins after the time from which the operator asked for records.
    void WarnOfEarlierTime(const Record& oldest) const
    {
        if (!filter_.sinceMs || *filter_.sinceMs >= oldest.timeMs) {
            return;
        }
        std::string text = "the log begins at " + LocalTimeText(oldest.timeMs);
        text += oldest.number != 0 ? "; newer records have overwritten the earlier ones" : "";
        PrintError(arguments_, text + DescribeLogsSetAside(arguments_, path_));
    }

    /// Writes the lines that were kept for --tail. Later lines are written at once.
    bool FlushOutput()
    {
        tail_ = false;
        for (const auto& [level, line] : std::exchange(kept_, {})) {
            output_.Write(level, line);
        }
        return output_.Flush();
    }

    void Take(const AttributedRecord& record)
    {
        if (!filter_.Accepts(record)) {
            return;
        }
        accepted_ = true;
        std::string line = arguments_.json ? ToJson(record) : ToText(record);
        const int level = arguments_.json ? -1 : record.record.level;
        if (!tail_) {
            output_.Write(level, line);
            return;
        }
        kept_.emplace_back(level, std::move(line));
        if (kept_.size() > *arguments_.tail) {
            kept_.pop_front();
        }
    }

    const LogArguments& arguments_;
    const std::string& path_;
    RecordFilter filter_;
    LineOutput& output_;
    bool tail_;
    bool added_ = false;
    bool begun_ = false;    // the oldest record was added
    bool accepted_ = false; // a record fits the filter
    std::deque<std::pair<int, std::string>> kept_;
    Attributor attributor_;
};

ScanSummary Read(const LogArguments& arguments, const std::string& path, Printer& printer)
{
    const auto add = [&](Record record) { printer.Add(std::move(record)); };
    if (!arguments.follow) {
        return ReadLogFile(path, arguments.encoding, add);
    }
    FollowEvents events;
    events.record = add;
    events.gap = [&](const NewRecords& found) { printer.Lost(found); };
    events.goOn = [&] { return printer.Looked(); };
    return FollowLog(path, arguments.encoding, {}, events);
}

int Show(const LogArguments& arguments, const std::string& path)
{
    if (arguments.follow && IsRecordFolder(path)) { // each look would read all of it
        PrintError(arguments, path +
                                  " is a folder, which cannot be followed\n  To follow the log: " +
                                  arguments.program + " log --follow");
        return kWrongUsage;
    }
    const std::unique_ptr<LineOutput> output = MakeLineOutput(arguments.colour);
    Printer printer(arguments, path, *output);
    try {
        const ScanSummary summary = Read(arguments, path, printer);
        if (!printer.Finish()) {
            std::cout.setstate(std::ios::badbit); // a console does not set it
        }
        return ReportDamage(arguments, path, summary);
    } catch (const OutputEnded&) {
        return kDone; // FinishOutput reports lost output
    }
}

// @return an error message; empty if the text is a time
std::string CheckMoment(const std::string& text)
{
    return ParseMoment(text, NowMs())
               ? ""
               : "not a time: " + text + "; write for example 03:52, 2h or yesterday";
}

void AddOptions(const CommandDefinition& command, LogArguments& arguments)
{
    command.Flag("--follow,-f", arguments.follow,
                 "Also show each record that is added from now on");
    command.Option("--tail,-n", arguments.tail, "Show only the last N lines").Word("N").Decimal();
    command
        .Option("--level", arguments.level,
                "Show records up to this level: 0 errors, 1 also warnings, 2 also information, "
                "3 everything")
        .Word("0-3")
        .Decimal()
        .Between(0, kEveryLevel);
    command
        .Option("--since", arguments.since,
                "Show only records from this time on: 2025-11-16T03:52[:36[.123]][Z], 03:52, 10m, "
                "2h, 3d, today, yesterday")
        .Word("TIME")
        .Checked(CheckMoment);
    command.Option("--daemon", arguments.daemonId, "Show only records of this daemon")
        .Word("ID")
        .Decimal();
    command
        .Option("--program", arguments.daemonProgram,
                "Show only records of daemons of this program, in all runs: a file name or a "
                "full path, or the name of a service")
        .Word("NAME");
    command
        .Option("--grep", arguments.grep,
                "Show only records that contain this text; letter case is ignored")
        .Word("TEXT");
    command.Flag("--json", arguments.json, "Print one JSON object per line, for programs");
    AddColourOption(command, arguments.colour);
}

} // namespace

void AddLogCommand(const CommandDefinition& app, int& exitCode, const LogPath& path)
{
    const auto arguments = std::make_shared<LogArguments>();
    const CommandDefinition command = app.Command(
        "log", "Show the supervisor's log: which programs started or ended, when and why");
    command.Alias("logs");
    AddLogOptions(command, *arguments, static_cast<bool>(path));
    AddOptions(command, *arguments);
    const std::string program = app.Name();
    command.Footer(
        "Examples:\n"
        "  " +
        program +
        " log --daemon 3 --since yesterday      why did daemon 3 end last night?\n"
        "  " +
        program +
        " log --program video.exe               all runs of a program, and how they ended\n"
        "  " +
        program +
        " log --level 0 --since 2h              the errors of the last two hours\n"
        "  " +
        program +
        " log --follow --tail 20                show what happens now\n"
        "  " +
        program +
        " log --file copy.log --json            for a program, from a copy\n"
        "The end of a process is shown as\n"
        "\"Exception caught in : REASON  [daemon ID, process PID]\". REASON \"Unknown (0x1)\" is the\n"
        "ordinary exit code 1. Daemon ids start again at 0 in each run of the supervisor.\n"
        "Exit code 5: the file, or some lines of it, cannot be read; all other lines are shown.");
    command.OnChosen([&exitCode, arguments, path] {
        exitCode = WithLogFile(*arguments, path,
                               [&](const std::string& file) { return Show(*arguments, file); });
    });
}

} // namespace vqrx::client::v0
