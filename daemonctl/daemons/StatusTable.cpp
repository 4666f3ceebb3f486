#include "StatusTable.h"

#include "ExitReason.h"
#include "Printable.h"
#include "ProgramOfCommand.h"
#include "Record.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <unordered_map>

namespace vqrx::client::v0 {
namespace {

constexpr std::size_t kColumns = 9;
constexpr std::size_t kLastExitColumn = 5;
using Row = std::array<std::string, kColumns>;

constexpr std::array<const char*, kColumns> kTitles = {
    "ID", "STATE", "PID", "UP SINCE", "RESTARTS", "LAST EXIT", "CPU", "MEMORY", "COMMAND"};
constexpr std::array<bool, kColumns> kRightAligned = {true,  false, true, false, true,
                                                      false, true,  true, false};
constexpr const char* kNothing = "-";
constexpr const char* kNotKnown = "?";

std::string WithOneDecimal(double number, const char* unit)
{
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%.1f%s", number, unit);
    return text.data();
}

std::string OrNothing(const std::optional<std::uint32_t>& number)
{
    return number ? std::to_string(*number) : kNothing;
}

std::string LastExitText(const DaemonStatus& daemon, const TimeWriter& timeText)
{
    if (!daemon.lastExit) {
        return kNothing;
    }
    const LastExit& last = *daemon.lastExit;
    return (last.reason.empty() ? kNotKnown : ReadableReason(last.reason)) +
           (last.sure ? ", " : " (likely), ") + timeText(last.timeMs);
}

std::string RestartsText(const DaemonStatus& daemon)
{
    const std::string text = std::to_string(daemon.restarts) + (daemon.restartsComplete ? "" : "+");
    if (daemon.state == RunState::kCannotStart) {
        return text + " (" + std::to_string(daemon.failedStarts) + " failed)";
    }
    return daemon.state == RunState::kRestarting
               ? text + " (" + std::to_string(daemon.recent.lastHour) + " in 1 h)"
               : text;
}

// The processes at the earlier look, by process id.
using FormerProcesses = std::unordered_map<std::uint32_t, const DaemonStatus*>;

FormerProcesses FormerProcessesOf(const TableStyle& style)
{
    FormerProcesses processes;
    if (style.before != nullptr) {
        for (const DaemonStatus& daemon : *style.before) {
            if (daemon.Runs()) {
                processes.emplace(*daemon.processId, &daemon);
            }
        }
    }
    return processes;
}

// Finds the same process at the earlier look.
const DaemonStatus* SameProcess(const FormerProcesses& former, const DaemonStatus& daemon)
{
    const auto found = former.find(*daemon.processId);
    return found != former.end() && found->second->process.createdMs == daemon.process.createdMs
               ? found->second
               : nullptr;
}

void AddProcess(Row& row, const DaemonStatus& daemon, const TableStyle& style,
                const FormerProcesses& former, const TimeWriter& timeText)
{
    constexpr double mebibyte = 1024.0 * 1024.0;
    const double memory = static_cast<double>(daemon.process.memoryBytes) / mebibyte;
    row[3] = timeText(daemon.process.createdMs);
    row[7] = WithOneDecimal(memory, " MiB");
    if (const DaemonStatus* const before = SameProcess(former, daemon)) {
        row[6] = WithOneDecimal(
            CpuPercent(before->process.cpuMs, daemon.process.cpuMs, style.nowMs - style.beforeMs),
            " %");
        const double change = memory - static_cast<double>(before->process.memoryBytes) / mebibyte;
        const std::string text = WithOneDecimal(change, "");
        row[7] += text == "0.0" || text == "-0.0" ? "" : (change > 0 ? " +" : " ") + text;
    } else {
        row[6] = WithOneDecimal(
            CpuPercent(0, daemon.process.cpuMs, style.nowMs - daemon.process.createdMs), " %");
    }
}

Row RowOf(const DaemonStatus& daemon, const TableStyle& style, const FormerProcesses& former,
          const TimeWriter& timeText)
{
    Row row;
    row.fill(kNothing);
    row[0] = OrNothing(daemon.id);
    row[1] = NameOf(daemon.state);
    row[2] = OrNothing(daemon.processId);
    row[4] = kNotKnown;
    row[kLastExitColumn] = kNotKnown;
    if (daemon.inLog) {
        row[4] = RestartsText(daemon);
        row[kLastExitColumn] = LastExitText(daemon, timeText);
    }
    if (daemon.Runs()) {
        AddProcess(row, daemon, style, former, timeText);
    }
    row.back() = WithoutBlank(daemon.command);
    std::transform(row.begin(), row.end(), row.begin(), Printable);
    return row;
}

// Writes the time of day of today, else month, day and time.
std::string ShortTime(const std::string& time, const std::string& now)
{
    constexpr std::size_t dateLength = 10;
    if (time.size() <= dateLength) {
        return time;
    }
    return time.compare(0, dateLength, now, 0, dateLength) == 0
               ? time.substr(dateLength + 1)
               : time.substr(std::strlen("2026-"), std::strlen("11-21 08:40"));
}

int LevelOf(RunState state)
{
    switch (state) {
    case RunState::kRestarting:
    case RunState::kCannotStart:
        return kErrorRecord;
    case RunState::kEnded:
    case RunState::kUnknown:
        return kWarningRecord;
    case RunState::kRunning:
        break;
    }
    return -1;
}

std::vector<std::string> Aligned(const std::vector<Row>& rows, bool withLastExit)
{
    std::array<std::size_t, kColumns> widths{};
    for (const Row& row : rows) {
        for (std::size_t column = 0; column < kColumns; ++column) {
            widths[column] = std::max(widths[column], CharactersOf(row[column]));
        }
    }
    std::vector<std::string> lines;
    for (const Row& row : rows) {
        std::string& line = lines.emplace_back();
        for (std::size_t column = 0; column + 1 < kColumns; ++column) {
            if (column == kLastExitColumn && !withLastExit) {
                continue;
            }
            const std::string padding(widths[column] - CharactersOf(row[column]), ' ');
            line += kRightAligned[column] ? padding + row[column] : row[column] + padding;
            line += "  ";
        }
        line += row.back();
    }
    return lines;
}

std::vector<Row> TitleRow()
{
    Row titles;
    std::copy(kTitles.begin(), kTitles.end(), titles.begin());
    return {titles};
}

std::vector<std::string> NarrowLines(const std::vector<DaemonStatus>& daemons,
                                     const TableStyle& style, const FormerProcesses& former)
{
    const std::string now = style.timeText(style.nowMs);
    const TimeWriter shortTime = [&](std::int64_t timeMs) {
        return ShortTime(style.timeText(timeMs), now);
    };
    std::vector<Row> rows = TitleRow();
    for (const DaemonStatus& daemon : daemons) {
        rows.push_back(RowOf(daemon, style, former, shortTime));
        rows.back().back() = WithoutFolder(rows.back().back());
    }
    std::vector<std::string> lines = Aligned(rows, false);
    for (std::string& line : lines) {
        line = CutTo(line, *style.width);
    }
    return lines;
}

} // namespace

std::vector<TableLine> TableOf(const std::vector<DaemonStatus>& daemons, const TableStyle& style)
{
    const FormerProcesses former = FormerProcessesOf(style);
    std::vector<Row> rows = TitleRow();
    for (const DaemonStatus& daemon : daemons) {
        rows.push_back(RowOf(daemon, style, former, style.timeText));
    }
    std::vector<std::string> lines = Aligned(rows, true);
    const auto isTooLong = [&style](const std::string& line) {
        return style.width && CharactersOf(line) > *style.width;
    };
    if (std::any_of(lines.begin(), lines.end(), isTooLong)) {
        lines = NarrowLines(daemons, style, former);
    }
    std::vector<TableLine> table;
    for (std::size_t index = 0; index < lines.size(); ++index) {
        table.push_back({lines[index], index == 0 ? -1 : LevelOf(daemons[index - 1].state)});
    }
    return table;
}

double CpuPercent(std::int64_t cpuBeforeMs, std::int64_t cpuMs, std::int64_t timeMs)
{
    constexpr double hundred = 100.0;
    constexpr std::int64_t shortestMs = 1000;
    return timeMs < 0 ? 0.0
                      : hundred * static_cast<double>(cpuMs - cpuBeforeMs) /
                            static_cast<double>(std::max(timeMs, shortestMs));
}

// The bytes that begin a character in UTF-8 count.
std::size_t CharactersOf(const std::string& utf8)
{
    return static_cast<std::size_t>(std::count_if(utf8.begin(), utf8.end(), [](char byte) {
        return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80U;
    }));
}

std::string CutTo(const std::string& utf8, std::size_t characters)
{
    if (CharactersOf(utf8) <= characters || characters == 0) {
        return characters == 0 ? "" : utf8;
    }
    std::size_t count = 0;
    std::size_t end = 0;
    while (end < utf8.size()) {
        const bool begins = (static_cast<unsigned char>(utf8[end]) & 0xC0U) != 0x80U;
        if (begins && count == characters - 1) {
            break;
        }
        count += begins ? 1 : 0;
        ++end;
    }
    return utf8.substr(0, end) + "\xE2\x80\xA6";
}

} // namespace vqrx::client::v0
