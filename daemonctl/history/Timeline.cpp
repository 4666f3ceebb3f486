#include "Timeline.h"

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

// The main thread writes these while the supervision's thread begins: before or behind its first
// line, and for COM's security in both places.
bool IsAroundStart(EventKind kind)
{
    return kind == EventKind::kComSecurityFailed || kind == EventKind::kPublicationFailed;
}

// What a supervisor logs of its daemons.
bool IsSupervision(EventKind kind)
{
    return kind == EventKind::kStarted || kind == EventKind::kStartFailed ||
           kind == EventKind::kEnded || kind == EventKind::kStopped ||
           kind == EventKind::kStopFailed || kind == EventKind::kAttached ||
           kind == EventKind::kAttachFailed || kind == EventKind::kDetached;
}

bool HasEnd(const Life& life)
{
    return life.end != LifeEnd::kRunning;
}

} // namespace

const Life* DaemonHistory::Running() const noexcept
{
    return lives.empty() || HasEnd(lives.back()) ? nullptr : &lives.back();
}

const Life* DaemonHistory::LastEnded() const noexcept
{
    const auto found = std::find_if(lives.rbegin(), lives.rend(), HasEnd);
    return found == lives.rend() ? nullptr : &*found;
}

const DaemonHistory* SupervisorRun::Find(std::uint32_t daemonId) const noexcept
{
    const auto found = daemons.find(daemonId);
    return found == daemons.end() ? nullptr : &found->second;
}

TimelineBuilder::TimelineBuilder()
    : attributor_([this](const AttributedRecord& record) { Take(record); })
{
}

void TimelineBuilder::Add(Record record)
{
    attributor_.Add(std::move(record));
}

// The lines of a start-up come before "Deamon Thread started": one that comes later is the next
// run's, also when the earlier one was killed and left no last words. A supervisor that is refused
// beside a running one ends first, and the running one's records overwrite the front of its lines:
// what is left of them may stand before all that a full file still has of the running one.
bool TimelineBuilder::BeginsRun(const Event& event) const
{
    if (timeline_.runs.empty()) {
        return true;
    }
    const SupervisorRun& run = timeline_.runs.back();
    if (run.endSeen && (IsAroundStart(event.kind) || IsSupervision(event.kind))) {
        return !BelongsToAnEndedRun(event);
    }
    return supervising_ && IsStartUp(event.kind);
}

// A client's request that is under way when the supervision ends may be logged behind its last
// words.
bool TimelineBuilder::BelongsToAnEndedRun(const Event& event) const
{
    if (event.kind == EventKind::kAttached || event.kind == EventKind::kAttachFailed) {
        return !timeline_.runs.back().daemons.empty(); // one that was refused never had any
    }
    const bool isClients = event.kind == EventKind::kStopped ||
                           event.kind == EventKind::kStopFailed ||
                           event.kind == EventKind::kDetached;
    if (!isClients || !event.daemonId) {
        return false;
    }
    const DaemonHistory* const daemon = timeline_.runs.back().Find(*event.daemonId);
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
    if (newRun) {
        SupervisorRun& run = timeline_.runs.emplace_back();
        run.firstMs = record.timeMs;
        run.beginningSeen = IsStartUp(kind) || IsAroundStart(kind);
        supervising_ = false;
    }
    const bool beforeStart = IsStartUp(kind) && kind != EventKind::kSupervisionStarted;
    supervising_ = supervising_ || !(beforeStart || IsAroundStart(kind));
    SupervisorRun& run = CurrentRun();
    run.lastMs = record.timeMs;
    run.lastNumber = record.number ? record.number : run.lastNumber;
    switch (kind) {
    case EventKind::kSupervisionStarted:
        run.startedMs = record.timeMs;
        break;
    case EventKind::kStarted:
        Started(attributed);
        break;
    case EventKind::kStartFailed:
        StartFailed(attributed);
        break;
    case EventKind::kEnded:
        if (attributed.event.daemonId) {
            EndLife(attributed, LifeEnd::kEnded, DaemonState::kEnded);
        } else {
            run.unknownEnds.push_back(
                {record.timeMs, attributed.event.service, attributed.event.reason});
        }
        break;
    case EventKind::kStopped:
        EndLife(attributed, LifeEnd::kStopped, DaemonState::kStopped);
        break;
    case EventKind::kStopFailed:
        EndLife(attributed, LifeEnd::kStopFailed, DaemonState::kStopFailed);
        break;
    case EventKind::kDetached:
        EndLife(attributed, LifeEnd::kDetached, DaemonState::kDetached);
        break;
    case EventKind::kAttached:
        Started(attributed);
        break;
    case EventKind::kAttachFailed:
        run.failedAttaches.push_back(
            {record.timeMs, attributed.event.daemonId, attributed.event.processId});
        break;
    case EventKind::kExitRequested:
        run.exitRequested = true;
        break;
    case EventKind::kStillRegistered:
        run.stillRegistered = attributed.event.count;
        break;
    case EventKind::kSupervisionEnded:
        run.endSeen = true;
        break;
    default:
        break;
    }
}

// Numbers may begin anew, stay or jump when a supervisor starts and reads its file again.
void TimelineBuilder::NoteGaps(const AttributedRecord& attributed, bool newRun)
{
    const Record& record = attributed.record;
    if (std::exchange(overflowed_, attributed.event.kind == EventKind::kQueueOverflow)) {
        timeline_.gaps.push_back({timeline_.lastMs, record.timeMs, GapKind::kQueueOverflow, 0});
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

DaemonHistory& TimelineBuilder::Daemon(const AttributedRecord& attributed)
{
    const Event& event = attributed.event;
    const auto [place, isNew] = CurrentRun().daemons.try_emplace(*event.daemonId);
    DaemonHistory& daemon = place->second;
    if (isNew) {
        daemon.id = *event.daemonId;
        daemon.command = event.command;
        daemon.attached = event.kind == EventKind::kAttached;
        // Later starts are warnings, the first one of a launched daemon is not.
        constexpr int firstStart = 2;
        daemon.beginningSeen = daemon.attached || (event.kind == EventKind::kStarted &&
                                                   attributed.record.level >= firstStart);
        const auto failed = CurrentRun().neverStarted.find(event.command);
        if (event.kind == EventKind::kStarted && failed != CurrentRun().neverStarted.end()) {
            daemon.failedStarts = std::move(failed->second);
            daemon.beginningSeen = true;
            CurrentRun().neverStarted.erase(failed);
        }
    }
    return daemon;
}

void TimelineBuilder::Started(const AttributedRecord& attributed)
{
    if (!attributed.event.daemonId) {
        return; // a damaged line: no start is without an id
    }
    DaemonHistory& daemon = Daemon(attributed);
    if (daemon.Running() != nullptr) {
        daemon.lives.back().end = LifeEnd::kLost;
        daemon.lives.back().endMs = attributed.record.timeMs;
    }
    Life life;
    life.processId = attributed.event.processId;
    life.startMs = attributed.record.timeMs;
    life.attached = attributed.event.kind == EventKind::kAttached;
    daemon.lives.push_back(std::move(life));
    daemon.state = DaemonState::kRunning;
}

void TimelineBuilder::StartFailed(const AttributedRecord& attributed)
{
    if (!attributed.event.daemonId) {
        CurrentRun().neverStarted[attributed.event.command].push_back(attributed.record.timeMs);
        return;
    }
    DaemonHistory& daemon = Daemon(attributed);
    if (daemon.Running() != nullptr) {
        daemon.lives.back().end = LifeEnd::kLost;
        daemon.lives.back().endMs = attributed.record.timeMs;
    }
    daemon.failedStarts.push_back(attributed.record.timeMs);
    daemon.state = DaemonState::kCannotStart;
}

void TimelineBuilder::EndLife(const AttributedRecord& attributed, LifeEnd end, DaemonState state)
{
    const Event& event = attributed.event;
    if (!event.daemonId) {
        return; // a damaged line
    }
    DaemonHistory& daemon = Daemon(attributed);
    // After a failed start the old process is ended and known: a stop then ends no life.
    const bool ownsNoLife = daemon.Running() == nullptr;
    if (ownsNoLife && daemon.lives.empty()) {
        Life life;
        life.processId = event.processId;
        life.startMs = CurrentRun().firstMs;
        life.startSeen = false;
        daemon.lives.push_back(std::move(life));
    }
    if (daemon.Running() != nullptr) {
        Life& life = daemon.lives.back();
        life.end = end;
        life.endMs = attributed.record.timeMs;
        life.reason = event.reason;
        life.stopMethod = end == LifeEnd::kStopped ? event.count : 0;
        life.attribution = attributed.attribution;
    }
    daemon.state = state;
}

Timeline TimelineBuilder::Finish()
{
    attributor_.Flush();
    for (SupervisorRun& run : timeline_.runs) {
        if (&run == &timeline_.runs.back() && !run.endSeen) {
            continue;
        }
        for (auto& [id, daemon] : run.daemons) {
            if (daemon.Running() != nullptr) {
                daemon.lives.back().end = LifeEnd::kSupervisorGone;
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
