#include "ReportModel.h"

#include "DaemonStatus.h"
#include "ExitReason.h"
#include "RunToShow.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace vqrx::client::v0 {
namespace {

/// A lane that is being made, with sums that the report does not show.
struct LaneDraft {
    ReportLane lane;
    std::uint32_t order = 0;           // daemon id in the last run
    double registeredMs = 0;           // time for which the daemon was registered
    double upMs = 0;                   // time for which it had a process
    std::vector<std::int64_t> endedMs; // durations of the processes that have ended
};

// The supervisor finds an end at its next pass, a second later at the latest.
constexpr std::int64_t kAboutOnePassMs = 1500;

// By command, and by place among the daemons of one run that have this command.
using LaneDrafts = std::map<std::pair<std::string, std::size_t>, LaneDraft>;

// @param now  null: the log alone shows the state
std::string StateText(const DaemonHistory& daemon, const DaemonStatus* now, const RunToShow& shown)
{
    if (now != nullptr) {
        return std::string(NameOf(now->state));
    }
    if (!shown.hasEnded && daemon.IsRegistered() && daemon.state != DaemonState::kCannotStart &&
        RestartsBefore(daemon, shown.endMs).IsCrashLoop()) {
        return "restarting";
    }
    switch (daemon.state) {
    case DaemonState::kRunning:
        return shown.hasEnded ? "left running" : "running";
    case DaemonState::kEnded:
        return "ended";
    case DaemonState::kCannotStart:
        return IsLookedAfter(daemon, shown.endMs) ? "cannot start" : "stopped";
    case DaemonState::kStopped:
        return "stopped";
    case DaemonState::kStopFailed:
        return "stop failed";
    case DaemonState::kDetached:
        return "detached";
    }
    return {};
}

// Returns nothing for a process that has not ended. A stop by a client counts as an end.
std::string ReasonText(const ProcessInterval& interval)
{
    switch (interval.end) {
    case IntervalEnd::kEnded:
        return ReadableReason(interval.reason);
    case IntervalEnd::kStopped:
        return "stopped on request";
    case IntervalEnd::kLost:
        return "not in the log";
    default:
        return {};
    }
}

// Returns for how long the daemon really had the process.
std::int64_t UpMs(const ReportInterval& shown)
{
    const bool endedByItself =
        shown.interval.end == IntervalEnd::kEnded || shown.interval.end == IntervalEnd::kLost;
    const std::int64_t lengthMs = shown.endMs - shown.beginMs;
    return endedByItself && lengthMs <= kAboutOnePassMs ? 0 : lengthMs;
}

// Returns an interval as the report draws it. A process that is gone has ended, although the log
// may not show it: the supervisor takes a process that ended with exit code 259 for a running one.
ReportInterval ToShow(const ProcessInterval& interval, const DaemonStatus* now,
                      const RunToShow& run)
{
    ReportInterval shown{interval.startMs,
                         std::max(interval.startMs, interval.endMs.value_or(run.endMs)), interval};
    if (now != nullptr && !now->processId && interval.end == IntervalEnd::kRunning) {
        shown.interval.end = IntervalEnd::kLost;
        shown.endMs = std::clamp(now->endedMs.value_or(shown.endMs), shown.beginMs, shown.endMs);
    }
    return shown;
}

void AddDaemon(LaneDraft& draft, const DaemonHistory& daemon, const RunToShow& run)
{
    ReportLane& lane = draft.lane;
    const DaemonStatus* const now = run.Now(daemon.id);
    lane.command = WithoutBlank(daemon.command);
    lane.ids.insert(daemon.id);
    draft.order = daemon.id;
    lane.state = StateText(daemon, now, run);
    const bool isLookedAfter = IsLookedAfter(daemon, run.endMs);
    lane.isRegistered = isLookedAfter && !run.hasEnded;
    lane.recent = lane.isRegistered ? RestartsBefore(daemon, run.endMs) : RecentRestarts{};
    lane.restarts += daemon.Restarts();
    std::int64_t begin = run.endMs;
    std::int64_t end = daemon.IsRegistered() && !isLookedAfter ? daemon.failedStarts.back() : begin;
    double up = 0;
    for (const ProcessInterval& interval : daemon.intervals) {
        const ReportInterval shown = ToShow(interval, now, run);
        begin = std::min(begin, shown.beginMs);
        end = daemon.IsRegistered() ? end : shown.endMs;
        up += static_cast<double>(UpMs(shown));
        if (const std::string reason = ReasonText(shown.interval); !reason.empty()) {
            ++lane.ends[reason];
            draft.endedMs.push_back(shown.endMs - shown.beginMs);
        }
        lane.longestMs = std::max(lane.longestMs.value_or(0), shown.endMs - shown.beginMs);
        lane.intervals.push_back(shown);
    }
    for (const std::int64_t failed : daemon.failedStarts) {
        begin = std::min(begin, failed);
        lane.failedStarts.push_back(failed);
    }
    draft.registeredMs += static_cast<double>(std::max<std::int64_t>(0, end - begin));
    draft.upMs += up;
}

// Adds a process of the supervisor whose start the log does not show any more.
void AddChild(LaneDraft& draft, const DaemonStatus& child, const RunToShow& run)
{
    ProcessInterval interval;
    interval.processId = child.processId;
    interval.startMs = child.process.createdMs;
    const std::int64_t endMs = std::max(run.endMs, interval.startMs);
    draft.lane.command = WithoutBlank(child.command);
    draft.lane.state = NameOf(child.state);
    draft.lane.isRegistered = true;
    draft.lane.intervals.push_back({interval.startMs, endMs, interval});
    draft.lane.longestMs = std::max(draft.lane.longestMs.value_or(0), endMs - interval.startMs);
    const auto seenMs = static_cast<double>(endMs - std::max(interval.startMs, run.run.firstMs));
    draft.registeredMs += std::max(0.0, seenMs);
    draft.upMs += std::max(0.0, seenMs);
}

void AddRun(LaneDrafts& drafts, const RunToShow& shown)
{
    for (auto& [key, draft] : drafts) {
        draft.lane.isRegistered = false; // an earlier run had it
        draft.lane.recent = {};
    }
    std::map<std::string, std::size_t> seen;
    for (const auto& [id, daemon] : shown.run.daemons) {
        AddDaemon(drafts[{daemon.command, seen[daemon.command]++}], daemon, shown);
    }
    for (const auto& [command, failed] : shown.run.neverStarted) {
        const bool isTried = WasTriedLately(failed, shown.endMs);
        LaneDraft& draft = drafts[{command, seen[command]++}];
        draft.lane.command = WithoutBlank(command);
        draft.lane.state = isTried ? "cannot start" : "stopped";
        draft.lane.isRegistered = isTried && !shown.hasEnded;
        draft.lane.failedStarts.insert(draft.lane.failedStarts.end(), failed.begin(), failed.end());
        const std::int64_t endMs = isTried ? shown.endMs : failed.back();
        draft.registeredMs +=
            static_cast<double>(std::max<std::int64_t>(0, endMs - failed.front()));
    }
    for (const DaemonStatus* const child : shown.children) {
        AddChild(drafts[{child->command, seen[child->command]++}], *child, shown);
    }
}

ReportLane Finish(LaneDraft draft)
{
    ReportLane& lane = draft.lane;
    if (draft.registeredMs > 0) {
        lane.availability = std::clamp(draft.upMs / draft.registeredMs, 0.0, 1.0);
    }
    if (!draft.endedMs.empty()) {
        std::sort(draft.endedMs.begin(), draft.endedMs.end());
        const std::size_t middle = draft.endedMs.size() / 2;
        lane.medianMs = draft.endedMs.size() % 2 != 0
                            ? draft.endedMs[middle]
                            : draft.endedMs[middle - 1] +
                                  (draft.endedMs[middle] - draft.endedMs[middle - 1]) / 2;
    }
    return std::move(lane);
}

// @param goesOn  the run that has not ended; may be null. The runs after it are those of refused
//                supervisors, while it went on
std::vector<ReportGap> Gaps(const Timeline& timeline, const SupervisorRun* goesOn)
{
    std::vector<ReportGap> gaps;
    for (const Gap& gap : timeline.gaps) {
        std::string text = gap.kind == GapKind::kQueueOverflow
                               ? "the supervisor could not write its log"
                               : std::to_string(gap.count) + " records are missing";
        text += gap.kind == GapKind::kLogOutage ? ": the log file could not be written" : "";
        gaps.push_back({gap.fromMs, std::max(gap.fromMs, gap.toMs), std::move(text)});
    }
    for (std::size_t index = 1; index < timeline.runs.size(); ++index) {
        if (&timeline.runs[index - 1] == goesOn) {
            break;
        }
        const std::int64_t from = timeline.runs[index - 1].lastMs;
        gaps.push_back({from, std::max(from, timeline.runs[index].firstMs),
                        timeline.runs[index - 1].endSeen
                            ? "no supervisor ran"
                            : "no supervisor ran, or it was killed meanwhile"});
    }
    return gaps;
}

// A daemon that never had a process has no id: its command tells which lane is its own.
void AddObstacles(std::vector<ReportLane>& lanes, const std::vector<DaemonStatus>& daemons)
{
    std::map<std::string, const std::vector<std::string>*> found;
    for (const DaemonStatus& daemon : daemons) {
        if (daemon.state == RunState::kCannotStart) {
            found.emplace(WithoutBlank(daemon.command), &daemon.obstacles);
        }
    }
    for (ReportLane& lane : lanes) {
        const auto obstacles = found.find(lane.command);
        if (lane.isRegistered && lane.state == NameOf(RunState::kCannotStart) &&
            obstacles != found.end()) {
            lane.obstacles = *obstacles->second;
        }
    }
}

} // namespace

const ReportInterval* ReportLane::LastExit() const noexcept
{
    const auto found =
        std::find_if(intervals.rbegin(), intervals.rend(), [](const ReportInterval& shown) {
            return shown.interval.end == IntervalEnd::kEnded;
        });
    return found == intervals.rend() ? nullptr : &*found;
}

ReportModel MakeReportModel(const Timeline& timeline, const ReportMoment& moment)
{
    ReportModel model;
    model.moment = moment;
    model.beginMs = timeline.firstMs;
    model.endMs = timeline.lastMs;
    model.records = timeline.records;
    model.runs = timeline.runs.size();
    const SupervisorRun* const goesOn = RunThatGoesOn(timeline);
    model.gaps = Gaps(timeline, goesOn);
    LaneDrafts drafts;
    for (const SupervisorRun& run : timeline.runs) {
        const bool hasEnded = &run != goesOn || !moment.showsRunning ||
                              moment.supervisor == SupervisorState::kNotRunning;
        const bool reachesToNow = !hasEnded && moment.supervisor == SupervisorState::kRunning;
        const std::int64_t endMs = reachesToNow ? std::max(run.lastMs, moment.nowMs) : run.lastMs;
        if (goesOn == nullptr || &run <= goesOn) { // a refused supervisor has no daemons
            RunToShow shown{run, hasEnded, endMs};
            if (!hasEnded && moment.daemons) {
                shown.Look(*moment.daemons);
            }
            AddRun(drafts, shown);
        }
        // A clock may be set back, so any run may hold the earliest or the latest record.
        model.beginMs = std::min({model.beginMs, run.firstMs, run.lastMs});
        model.endMs = std::max({model.endMs, run.firstMs, endMs});
        for (const UnknownEnd& end : run.unknownEnds) {
            ++model.ends[ReadableReason(end.reason)];
            ++model.unknownEnds;
        }
    }
    std::vector<LaneDraft> ordered;
    for (auto& [key, draft] : drafts) {
        ordered.push_back(std::move(draft));
    }
    std::stable_sort(ordered.begin(), ordered.end(),
                     [](const LaneDraft& left, const LaneDraft& right) {
                         const bool leftKnown = !left.lane.ids.empty();
                         const bool rightKnown = !right.lane.ids.empty();
                         return leftKnown != rightKnown ? leftKnown : left.order < right.order;
                     });
    for (LaneDraft& draft : ordered) {
        for (const auto& [reason, count] : draft.lane.ends) {
            model.ends[reason] += count;
        }
        model.lanes.push_back(Finish(std::move(draft)));
    }
    if (moment.daemons) {
        AddObstacles(model.lanes, *moment.daemons);
    }
    return model;
}

} // namespace vqrx::client::v0
