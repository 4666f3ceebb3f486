#include "ReportModel.h"

#include <algorithm>
#include <cstddef>
#include <utility>

namespace vqrx::client::v0 {
namespace {

/// What a lane is made of, and what is not shown of it.
struct Work {
    ReportLane lane;
    std::uint32_t order = 0; // id in the last run
    double registeredMs = 0; // how long it was to be up
    double upMs = 0;
    std::vector<std::int64_t> ended; // lengths of the lives that have ended
};

using Works = std::map<std::pair<std::string, std::size_t>, Work>; // command, and which of its kind

std::string WithoutBlank(std::string command)
{
    if (command.ends_with(' ')) {
        command.pop_back();
    }
    return command;
}

std::string StateText(const DaemonHistory& daemon, bool runEnded)
{
    switch (daemon.state) {
    case DaemonState::kRunning:
        return runEnded ? "left running" : "running";
    case DaemonState::kEnded:
        return "ended";
    case DaemonState::kCannotStart:
        return "cannot start";
    case DaemonState::kStopped:
        return "stopped";
    case DaemonState::kStopFailed:
        return "stop failed";
    case DaemonState::kDetached:
        return "detached";
    }
    return {};
}

// A stop is an end as well, if not one by itself.
std::string ReasonText(const Life& life)
{
    switch (life.end) {
    case LifeEnd::kEnded:
        return life.reason;
    case LifeEnd::kStopped:
        return "stopped on request";
    case LifeEnd::kLost:
        return "not in the log";
    default:
        return {};
    }
}

void AddDaemon(Work& work, const DaemonHistory& daemon, const SupervisorRun& run, bool runEnded)
{
    ReportLane& lane = work.lane;
    lane.command = WithoutBlank(daemon.command);
    lane.ids.insert(daemon.id);
    work.order = daemon.id;
    lane.state = StateText(daemon, runEnded);
    lane.restarts += daemon.Restarts();
    std::int64_t begin = run.lastMs;
    std::int64_t end = daemon.IsRegistered() ? run.lastMs : begin;
    double up = 0;
    for (const Life& life : daemon.lives) {
        const ReportLife shown{life.startMs,
                               std::max(life.startMs, life.endMs.value_or(run.lastMs)), life};
        begin = std::min(begin, shown.beginMs);
        end = daemon.IsRegistered() ? end : shown.endMs;
        up += static_cast<double>(shown.endMs - shown.beginMs);
        if (const std::string reason = ReasonText(life); !reason.empty()) {
            ++lane.ends[reason];
            work.ended.push_back(shown.endMs - shown.beginMs);
        }
        lane.longestMs = std::max(lane.longestMs.value_or(0), shown.endMs - shown.beginMs);
        lane.lives.push_back(shown);
    }
    for (const std::int64_t failed : daemon.failedStarts) {
        begin = std::min(begin, failed);
        lane.failedStarts.push_back(failed);
    }
    work.registeredMs += static_cast<double>(std::max<std::int64_t>(0, end - begin));
    work.upMs += up;
}

void AddRun(Works& works, const SupervisorRun& run, bool runEnded)
{
    std::map<std::string, std::size_t> seen;
    for (const auto& [id, daemon] : run.daemons) {
        AddDaemon(works[{daemon.command, seen[daemon.command]++}], daemon, run, runEnded);
    }
    for (const auto& [command, failed] : run.neverStarted) {
        Work& work = works[{command, seen[command]++}];
        work.lane.command = WithoutBlank(command);
        work.lane.state = "cannot start";
        work.lane.failedStarts.insert(work.lane.failedStarts.end(), failed.begin(), failed.end());
        work.registeredMs +=
            static_cast<double>(std::max<std::int64_t>(0, run.lastMs - failed.front()));
    }
}

ReportLane Finish(Work work)
{
    ReportLane& lane = work.lane;
    if (work.registeredMs > 0) {
        lane.availability = std::clamp(work.upMs / work.registeredMs, 0.0, 1.0);
    }
    if (!work.ended.empty()) {
        std::sort(work.ended.begin(), work.ended.end());
        const std::size_t middle = work.ended.size() / 2;
        lane.medianMs =
            work.ended.size() % 2 != 0
                ? work.ended[middle]
                : work.ended[middle - 1] + (work.ended[middle] - work.ended[middle - 1]) / 2;
    }
    return std::move(lane);
}

std::vector<ReportGap> Gaps(const Timeline& timeline)
{
    std::vector<ReportGap> gaps;
    for (const Gap& gap : timeline.gaps) {
        std::string text = gap.kind == GapKind::kQueueOverflow
                               ? "the supervisor could not write its log"
                               : std::to_string(gap.count) + " records are missing";
        gaps.push_back({gap.fromMs, std::max(gap.fromMs, gap.toMs), std::move(text)});
    }
    for (std::size_t index = 1; index < timeline.runs.size(); ++index) {
        const std::int64_t from = timeline.runs[index - 1].lastMs;
        gaps.push_back({from, std::max(from, timeline.runs[index].firstMs),
                        timeline.runs[index - 1].endSeen
                            ? "no supervisor ran"
                            : "no supervisor ran, or it was killed meanwhile"});
    }
    return gaps;
}

} // namespace

ReportModel MakeReportModel(const Timeline& timeline)
{
    ReportModel model;
    model.beginMs = timeline.firstMs;
    model.endMs = timeline.lastMs;
    model.records = timeline.records;
    model.runs = timeline.runs.size();
    model.gaps = Gaps(timeline);
    Works works;
    for (const SupervisorRun& run : timeline.runs) {
        const bool isLast = &run == &timeline.runs.back();
        AddRun(works, run, !isLast || run.endSeen);
        // Clocks are set: no record need be the earliest or the latest.
        model.beginMs = std::min({model.beginMs, run.firstMs, run.lastMs});
        model.endMs = std::max({model.endMs, run.firstMs, run.lastMs});
        for (const UnknownEnd& end : run.unknownEnds) {
            ++model.ends[end.reason];
            ++model.unknownEnds;
        }
    }
    std::vector<Work> ordered;
    for (auto& [key, work] : works) {
        ordered.push_back(std::move(work));
    }
    std::stable_sort(ordered.begin(), ordered.end(), [](const Work& left, const Work& right) {
        const bool leftKnown = !left.lane.ids.empty();
        const bool rightKnown = !right.lane.ids.empty();
        return leftKnown != rightKnown ? leftKnown : left.order < right.order;
    });
    for (Work& work : ordered) {
        for (const auto& [reason, count] : work.lane.ends) {
            model.ends[reason] += count;
        }
        model.lanes.push_back(Finish(std::move(work)));
    }
    return model;
}

} // namespace vqrx::client::v0
