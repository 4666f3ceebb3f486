#include "WatchScreen.h"

#include "RecordText.h"

#include <algorithm>

namespace vqrx::client::v0 {
namespace {

// Finds the same daemon at the look before: by its id, or by its command if it has no id.
const DaemonStatus* SameDaemonBefore(const WatchLook& before, const DaemonStatus& daemon)
{
    const auto found = std::find_if(
        before.daemons.begin(), before.daemons.end(), [&daemon](const DaemonStatus& other) {
            return other.id == daemon.id && other.command == daemon.command;
        });
    return found == before.daemons.end() ? nullptr : &*found;
}

bool HasChanged(const WatchLook* before, const DaemonStatus& daemon)
{
    if (before == nullptr || !before->problem.empty()) {
        return false;
    }
    const DaemonStatus* const same = SameDaemonBefore(*before, daemon);
    return same == nullptr || same->state != daemon.state || same->processId != daemon.processId ||
           same->restarts != daemon.restarts;
}

bool IsNew(const WatchLook* before, const AttributedRecord& record)
{
    return before != nullptr && !before->records.empty() &&
           record.record.timeMs > before->records.back().record.timeMs;
}

std::vector<ScreenLine> TableLines(const WatchLook* before, const WatchLook& now,
                                   const ScreenSize& size, const TimeWriter& timeText)
{
    TableStyle style;
    style.nowMs = now.nowMs;
    style.timeText = timeText;
    style.width = size.width;
    if (before != nullptr && before->problem.empty()) {
        style.before = &before->daemons;
        style.beforeMs = before->nowMs;
    }
    std::vector<ScreenLine> lines;
    for (TableLine& line : TableOf(now.daemons, style)) {
        const bool marked = !lines.empty() && HasChanged(before, now.daemons[lines.size() - 1]);
        lines.push_back({std::move(line.text), line.level, marked});
    }
    return lines;
}

} // namespace

std::vector<ScreenLine> ComposeScreen(const WatchLook* before, const WatchLook& now,
                                      const ScreenSize& size, std::uint32_t everySeconds,
                                      const TimeWriter& timeText)
{
    std::vector<ScreenLine> lines = {{CutTo(timeText(now.nowMs) + "   every " +
                                                std::to_string(everySeconds) + " s   Ctrl+C ends",
                                            size.width)}};
    if (!now.problem.empty()) {
        lines.push_back({CutTo(now.problem, size.width), kErrorRecord, false});
    } else {
        const std::vector<ScreenLine> table = TableLines(before, now, size, timeText);
        lines.insert(lines.end(), table.begin(), table.end());
    }
    if (lines.size() > size.height) {
        const std::size_t hidden = lines.size() - size.height + 1;
        lines.resize(size.height - std::min<std::size_t>(size.height, 1));
        lines.push_back({"... and " + std::to_string(hidden) + " more"});
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
