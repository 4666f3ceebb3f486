#include "TimelineBuilder.h"

#include "DaemonEvents.h"

#include <algorithm>
#include <utility>

namespace vqrx::client::v0 {
namespace {

bool IsStartUp(EventKind kind)
{
    return kind == EventKind::kFirewallDetected || kind == EventKind::kFirewallStarting ||
           kind == EventKind::kWmiConnecting || kind == EventKind::kWmiConnected ||
           kind == EventKind::kWmiFailed || kind == EventKind::kSupervisionStarted;
}

// The main thread writes these messages while the supervision thread starts, so they can stand
// before or after "Deamon Thread started". The message about COM security can stand in both places.
bool IsAroundStart(EventKind kind)
{
    return kind == EventKind::kComSecurityFailed || kind == EventKind::kPublicationFailed;
}

bool IsAboutDaemons(EventKind kind)
{
    return kind == EventKind::kStarted || kind == EventKind::kStartFailed ||
           kind == EventKind::kEnded || kind == EventKind::kStopped ||
           kind == EventKind::kStopFailed || kind == EventKind::kAttached ||
           kind == EventKind::kAttachFailed || kind == EventKind::kDetached;
}

} // namespace

TimelineBuilder::TimelineBuilder()
    : attributor_([this](const AttributedRecord& record) { Take(record); })
{
}

void TimelineBuilder::Add(Record record)
{
    attributor_.Add(std::move(record));
}

// Returns whether a new run begins with this event. Three cases:
//  - The log has no run yet.
//  - A start-up message comes after "Deamon Thread started". The run before may have been killed,
//    so that the log holds no end of it.
//  - The run before has ended, and a daemon is supervised again. This happens when a second
//    supervisor was refused beside a running one: both write to one full file. Of the refused one
//    only the last records are left, and the file shows them first. Example:
//      "Deamon Thread is exiting..."   of the refused one: its run has ended
//      "Start ..."                     of the running one: here its run begins
bool TimelineBuilder::BeginsRun(const Event& event) const
{
    if (timeline_.runs.empty()) {
        return true;
    }
    const SupervisorRun& run = timeline_.runs.back();
    if (run.endSeen && (IsAroundStart(event.kind) || IsAboutDaemons(event.kind))) {
        return !BelongsToEndedRun(event);
    }
    return supervising_ && IsStartUp(event.kind);
}

// Returns whether a message after the end of a run still belongs to it: a client's request may
// finish after the supervision thread has written its last message.
bool TimelineBuilder::BelongsToEndedRun(const Event& event) const
{
    const SupervisorRun& run = timeline_.runs.back();
    if (event.kind == EventKind::kAttached || event.kind == EventKind::kAttachFailed) {
        return !run.daemons.empty(); // a supervisor that was refused has no daemons
    }
    const bool isByClient = event.kind == EventKind::kStopped ||
                            event.kind == EventKind::kStopFailed ||
                            event.kind == EventKind::kDetached;
    if (!isByClient || !event.daemonId) {
        return false;
    }
    const DaemonHistory* const daemon = run.Find(*event.daemonId);
    return daemon != nullptr && daemon->Running() != nullptr &&
           daemon->Running()->processId == event.processId;
}

void TimelineBuilder::Take(const AttributedRecord& attributed)
{
    const Record& record = attributed.record;
    const EventKind kind = attributed.event.kind;
    const bool newRun = BeginsRun(attributed.event);
    NoteGaps(attributed, newRun);
    if (timeline_.records++ == 0) {
        timeline_.firstMs = record.timeMs;
    }
    timeline_.lastMs = record.timeMs;
    latestMs_ = std::max(latestMs_, record.timeMs);
    if (newRun) {
        BeginRun(attributed);
    }
    const bool beforeStart = IsStartUp(kind) && kind != EventKind::kSupervisionStarted;
    supervising_ = supervising_ || !(beforeStart || IsAroundStart(kind));
    SupervisorRun& run = CurrentRun();
    run.lastMs = record.timeMs;
    run.firstNumber = run.firstNumber ? run.firstNumber : record.number;
    run.lastNumber = record.number ? record.number : run.lastNumber;
    AddEvent(attributed);
}

// A run may count its records from any number, so a step between two runs is no gap.
void TimelineBuilder::NoteGaps(const AttributedRecord& attributed, bool newRun)
{
    const Record& record = attributed.record;
    if (std::exchange(overflowed_, attributed.event.kind == EventKind::kQueueOverflow)) {
        timeline_.gaps.push_back({timeline_.lastMs, record.timeMs, GapKind::kQueueOverflow, 0});
    }
    if (attributed.event.kind == EventKind::kLogOutage) {
        timeline_.gaps.push_back(
            {timeline_.lastMs, record.timeMs, GapKind::kLogOutage, attributed.event.count});
    }
    if (!newRun && record.number && lastNumber_ && *record.number > *lastNumber_) {
        const std::uint64_t step =
            static_cast<std::uint64_t>(*record.number) - static_cast<std::uint64_t>(*lastNumber_);
        if (step > 1) {
            timeline_.gaps.push_back(
                {timeline_.lastMs, record.timeMs, GapKind::kMissingNumbers, step - 1});
        }
    }
    if (record.number) {
        lastNumber_ = record.number;
    }
}

void TimelineBuilder::BeginRun(const AttributedRecord& attributed)
{
    SupervisorRun& run = timeline_.runs.emplace_back();
    run.firstMs = attributed.record.timeMs;
    run.beginningSeen = IsStartUp(attributed.event.kind) || IsAroundStart(attributed.event.kind);
    supervising_ = false;
}

void TimelineBuilder::AddEvent(const AttributedRecord& attributed)
{
    const Event& event = attributed.event;
    const std::int64_t timeMs = attributed.record.timeMs;
    SupervisorRun& run = CurrentRun();
    switch (event.kind) {
    case EventKind::kSupervisionStarted:
        run.startedMs = timeMs;
        break;
    case EventKind::kStarted:
    case EventKind::kAttached:
        AddStart(run, attributed, latestMs_);
        break;
    case EventKind::kStartFailed:
        AddFailedStart(run, attributed);
        break;
    case EventKind::kEnded:
        if (event.daemonId) {
            AddEnd(run, attributed, IntervalEnd::kEnded, DaemonState::kEnded);
        } else {
            run.unknownEnds.push_back({timeMs, event.service, event.reason});
        }
        break;
    case EventKind::kStopped:
        AddEnd(run, attributed, IntervalEnd::kStopped, DaemonState::kStopped);
        break;
    case EventKind::kStopFailed:
        AddEnd(run, attributed, IntervalEnd::kStopFailed, DaemonState::kStopFailed);
        break;
    case EventKind::kDetached:
        AddEnd(run, attributed, IntervalEnd::kDetached, DaemonState::kDetached);
        break;
    case EventKind::kAttachFailed:
        run.failedAttaches.push_back({timeMs, event.daemonId, event.processId});
        break;
    case EventKind::kExitRequested:
        run.exitRequested = true;
        break;
    case EventKind::kStillRegistered:
        run.stillRegistered = event.count;
        break;
    case EventKind::kSupervisionEnded:
        run.endSeen = true;
        break;
    default:
        break;
    }
}

Timeline TimelineBuilder::Finish()
{
    attributor_.Flush();
    const SupervisorRun* const goesOn = RunThatGoesOn(timeline_);
    for (SupervisorRun& run : timeline_.runs) {
        if (&run == goesOn) {
            continue;
        }
        for (auto& [id, daemon] : run.daemons) {
            if (daemon.Running() != nullptr) {
                daemon.intervals.back().end = IntervalEnd::kSupervisorGone;
            }
        }
    }
    return std::move(timeline_);
}

Timeline BuildTimeline(const std::vector<Record>& records)
{
    TimelineBuilder builder;
    for (const Record& record : records) {
        builder.Add(record);
    }
    return builder.Finish();
}

} // namespace vqrx::client::v0
