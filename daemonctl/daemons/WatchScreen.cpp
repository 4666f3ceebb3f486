#include "WatchScreen.h"

#include "RecordText.h"

#include <algorithm>
#include <cstddef>
#include <map>
#include <optional>
#include <string_view>
#include <utility>

namespace vqrx::client::v0 {
namespace {

// The daemons at the look before, by id and command: one that could never be started has no id.
using FormerDaemons =
    std::map<std::pair<std::optional<std::uint32_t>, std::string_view>, const DaemonStatus*>;

FormerDaemons FormerDaemonsOf(const WatchLook* before)
{
    FormerDaemons daemons;
    if (before != nullptr && before->problem.empty()) {
        for (const DaemonStatus& daemon : before->daemons) {
            daemons.emplace(std::pair(daemon.id, std::string_view(daemon.command)), &daemon);
        }
    }
    return daemons;
}

bool HasChanged(const FormerDaemons& former, const DaemonStatus& daemon)
{
    const auto same = former.find({daemon.id, daemon.command});
    return same == former.end() || same->second->state != daemon.state ||
           same->second->processId != daemon.processId || same->second->restarts != daemon.restarts;
}

bool IsNew(const WatchLook* before, const AttributedRecord& record)
{
    return before != nullptr &&
           (before->records.empty() || record.record.timeMs > before->records.back().record.timeMs);
}

std::vector<ScreenLine> TableLines(const WatchLook* before, const WatchLook& now,
                                   const ScreenSize& size, const TimeWriter& timeText)
{
    TableStyle style;
    style.nowMs = now.nowMs;
    style.timeText = timeText;
    style.width = size.width;
    const bool isComparable = before != nullptr && before->problem.empty();
    if (isComparable) {
        style.before = &before->daemons;
        style.beforeMs = before->nowMs;
    }
    const FormerDaemons former = FormerDaemonsOf(before);
    std::vector<ScreenLine> lines;
    for (TableLine& line : TableOf(now.daemons, style)) {
        const bool marked =
            isComparable && !lines.empty() && HasChanged(former, now.daemons[lines.size() - 1]);
        lines.push_back({std::move(line.text), line.level, marked});
    }
    return lines;
}

// Describes the lines for which the window has no room. Their daemons may be the ones in trouble.
ScreenLine DescribeHidden(const std::vector<ScreenLine>& lines, std::size_t shown,
                          std::size_t width)
{
    const auto first = lines.begin() + static_cast<std::ptrdiff_t>(shown);
    const auto troubled = std::count_if(
        first, lines.end(), [](const ScreenLine& line) { return line.level == kErrorRecord; });
    std::string text = "... and " + std::to_string(lines.end() - first) + " more";
    if (troubled == 0) {
        return {CutTo(text, width)};
    }
    text += ", " + std::to_string(troubled) + " of them in trouble";
    return {CutTo(text, width), kErrorRecord, false};
}

} // namespace

std::vector<ScreenLine> ComposeScreen(const WatchLook* before, const WatchLook& now,
                                      const ScreenSize& size, std::uint32_t everySeconds,
                                      const TimeWriter& timeText)
{
    std::vector<ScreenLine> lines = {{CutTo(timeText(now.nowMs) + "   every " +
                                                std::to_string(everySeconds) + " s   Ctrl+C ends",
                                            size.width)}};
    if (!now.note.empty()) {
        lines.push_back({CutTo(now.note, size.width), kErrorRecord, false});
    }
    if (!now.problem.empty()) {
        lines.push_back({CutTo(now.problem, size.width), kErrorRecord, false});
    } else {
        const std::vector<ScreenLine> table = TableLines(before, now, size, timeText);
        lines.insert(lines.end(), table.begin(), table.end());
    }
    if (lines.size() > size.height) {
        const std::size_t shown = size.height - std::min<std::size_t>(size.height, 1);
        ScreenLine last = DescribeHidden(lines, shown, size.width);
        lines.resize(shown);
        lines.push_back(std::move(last));
        return lines;
    }
    const std::size_t room = size.height - lines.size();
    if (room < 2 || now.records.empty()) {
        return lines;
    }
    lines.emplace_back(); // an empty line between the table and the records
    const std::size_t count = std::min(room - 1, now.records.size());
    for (std::size_t index = now.records.size() - count; index < now.records.size(); ++index) {
        const AttributedRecord& record = now.records[index];
        lines.push_back(
            {CutTo(ToText(record), size.width), record.record.level, IsNew(before, record)});
    }
    return lines;
}

bool IsWorthWatching(const AttributedRecord& record)
{
    switch (record.event.kind) {
    case EventKind::kStarted:
    case EventKind::kStartFailed:
    case EventKind::kEnded:
    case EventKind::kStopped:
    case EventKind::kStopFailed:
    case EventKind::kAttached:
    case EventKind::kAttachFailed:
    case EventKind::kDetached:
    case EventKind::kSupervisionStarted:
    case EventKind::kSupervisionEnded:
    case EventKind::kSupervisionError:
    case EventKind::kQueueOverflow:
    case EventKind::kLogOutage:
        return true;
    default:
        return false;
    }
}

} // namespace vqrx::client::v0
