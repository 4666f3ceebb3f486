#include "RecordText.h"

#include "ExitReason.h"
#include "Printable.h"
#include "TimeText.h"

#include <nlohmann/json.hpp>

#include <cstdint>
#include <optional>

namespace vqrx::client::v0 {
namespace {

using Json = nlohmann::ordered_json;

Json Optional(const std::optional<std::string>& text)
{
    return text ? Json(*text) : Json(nullptr);
}

// Writes what daemonctl knows about an end beside the text of its record; empty if it knows
// nothing.
std::string NoteOfEnd(const AttributedRecord& attributed)
{
    const Event& event = attributed.event;
    std::string note;
    if (event.daemonId) {
        note = attributed.attribution == Attribution::kLikely ? "probably daemon " : "daemon ";
        note += std::to_string(*event.daemonId);
        if (event.processId) {
            note += ", process " + std::to_string(*event.processId);
        }
    }
    const std::string reason = ReadableReason(event.reason);
    if (reason != event.reason) {
        note += (note.empty() ? "" : ", ") + reason;
    }
    return note;
}

} // namespace

std::string ToText(const AttributedRecord& attributed)
{
    const Record& record = attributed.record;
    std::string line = Printable(record.date);
    line.append(1, ' ').append(Printable(record.text));
    const std::string note =
        attributed.event.kind == EventKind::kEnded ? NoteOfEnd(attributed) : std::string();
    if (!note.empty()) {
        line.append("  [").append(note).append("]");
    }
    return line;
}

std::string ToJson(const AttributedRecord& attributed)
{
    const Record& record = attributed.record;
    const Event& event = attributed.event;
    Json line;
    line["number"] = record.number ? Json(*record.number) : Json(nullptr);
    line["time"] = Optional(IsoTime(record.timeMs));
    line["time_ms"] = record.timeMs;
    line["level"] = record.level;
    line["text"] = record.text;
    if (event.kind != EventKind::kOther) {
        line["event"] = std::string(NameOf(event.kind));
    }
    if (event.daemonId) {
        line["daemon_id"] = *event.daemonId;
    }
    if (event.processId) {
        line["process_id"] = *event.processId;
    }
    if (event.kind == EventKind::kEnded) {
        line["reason"] = ReadableReason(event.reason);
        line["sure"] = attributed.attribution == Attribution::kPaired;
    }
    return line.dump(-1, ' ', true, Json::error_handler_t::replace);
}

std::string OverwrittenJson(const std::optional<std::uint64_t>& count)
{
    Json line;
    line["event"] = "records-overwritten";
    line["count"] = count ? Json(*count) : Json(nullptr);
    return line.dump();
}

std::string NewLogJson()
{
    Json line;
    line["event"] = "log-begun-anew";
    return line.dump();
}

} // namespace vqrx::client::v0
