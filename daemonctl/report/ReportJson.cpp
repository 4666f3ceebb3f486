#include "ReportJson.h"

#include "ExitReason.h"
#include "TimeText.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <utility>

namespace vqrx::client::v0 {
namespace {

using ReportObject = nlohmann::ordered_json;

template <typename Value>
ReportObject ValueOrNull(const std::optional<Value>& value)
{
    return value ? ReportObject(*value) : ReportObject(nullptr);
}

const char* NameOfSupervisor(SupervisorState state)
{
    switch (state) {
    case SupervisorState::kRunning:
        return "running";
    case SupervisorState::kNotRunning:
        return "not_running";
    case SupervisorState::kNotAnswering:
        return "not_answering";
    case SupervisorState::kUnknown:
        break;
    }
    return "unknown";
}

ReportObject TimeObject(std::int64_t timeMs)
{
    return {{"time", ValueOrNull(IsoTime(timeMs))}, {"time_ms", timeMs}};
}

ReportObject LastExitObject(const ReportLane& lane)
{
    const ReportInterval* const found = lane.LastExit();
    if (found == nullptr) {
        return nullptr;
    }
    ReportObject object = TimeObject(found->endMs);
    object["reason"] = ReadableReason(found->interval.reason);
    object["sure"] = found->interval.attribution != Attribution::kLikely;
    return object;
}

ReportObject DaemonObject(const ReportLane& lane)
{
    std::string state = lane.state;
    std::replace(state.begin(), state.end(), ' ', '_');
    const bool runs =
        !lane.intervals.empty() && lane.intervals.back().interval.end == IntervalEnd::kRunning;
    return {
        {"ids", lane.ids},
        {"command", lane.command},
        {"state", state},
        {"watched", lane.isRegistered},
        {"up_since_ms", runs ? ReportObject(lane.intervals.back().beginMs) : ReportObject(nullptr)},
        {"restarts", lane.restarts},
        {"restarts_last_hour", lane.recent.lastHour},
        {"restarts_last_10_minutes", lane.recent.lastTenMinutes},
        {"failed_starts", lane.failedStarts.size()},
        {"availability", ValueOrNull(lane.availability)},
        {"longest_ms", ValueOrNull(lane.longestMs)},
        {"median_ms", ValueOrNull(lane.medianMs)},
        {"last_exit", LastExitObject(lane)},
        {"ends", lane.ends}};
}

ReportObject GapObject(const ReportGap& gap)
{
    return {{"begin_ms", gap.beginMs}, {"end_ms", gap.endMs}, {"text", gap.text}};
}

ReportObject LogDamage(const ReportMoment& moment)
{
    std::string text = moment.logDamage;
    if (!moment.showsRunning) {
        text += text.empty() ? "" : "; ";
        text += "it does not show the supervisor that is running";
    }
    return text.empty() ? ReportObject(nullptr) : ReportObject(text);
}

} // namespace

std::string ReportJson(const ReportModel& model, std::string_view source,
                       const std::string& version)
{
    ReportObject daemons = ReportObject::array();
    for (const ReportLane& lane : model.lanes) {
        daemons.push_back(DaemonObject(lane));
    }
    ReportObject gaps = ReportObject::array();
    for (const ReportGap& gap : model.gaps) {
        gaps.push_back(GapObject(gap));
    }
    const ReportObject report = {
        {"version", version},
        {"written", TimeObject(model.moment.nowMs)},
        {"source", source},
        {"supervisor", NameOfSupervisor(model.moment.supervisor)},
        {"log_failure", model.moment.logFailure.empty() ? ReportObject(nullptr)
                                                        : ReportObject(model.moment.logFailure)},
        {"log_damage", LogDamage(model.moment)},
        {"from", model.records != 0 ? TimeObject(model.beginMs) : ReportObject(nullptr)},
        {"to", model.records != 0 ? TimeObject(model.endMs) : ReportObject(nullptr)},
        {"records", model.records},
        {"runs", model.runs},
        {"daemons", std::move(daemons)},
        {"ends", model.ends},
        {"ends_of_unknown_daemons", model.unknownEnds},
        {"gaps", std::move(gaps)}};
    return report.dump(2, ' ', true, ReportObject::error_handler_t::replace) + "\n";
}

} // namespace vqrx::client::v0
