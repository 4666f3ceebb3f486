#include "DaemonEvents.h"

#include <utility>

namespace vqrx::client::v0 {
namespace {

// The level of the message about the first start of a launched daemon. A restart is a warning.
constexpr int kFirstStartLevel = kInformationRecord;

// Finds the daemon of a record, or adds it to the run.
DaemonHistory& DaemonOf(SupervisorRun& run, const AttributedRecord& attributed)
{
    const Event& event = attributed.event;
    const auto [place, isNew] = run.daemons.try_emplace(*event.daemonId);
    DaemonHistory& daemon = place->second;
    if (isNew) {
        daemon.id = *event.daemonId;
        daemon.command = event.command;
        daemon.attached = event.kind == EventKind::kAttached;
        daemon.beginningSeen = daemon.attached || (event.kind == EventKind::kStarted &&
                                                   attributed.record.level >= kFirstStartLevel);
        const auto failed = run.neverStarted.find(event.command);
        if (event.kind == EventKind::kStarted && failed != run.neverStarted.end()) {
            daemon.failedStarts = std::move(failed->second);
            daemon.beginningSeen = true;
            run.neverStarted.erase(failed);
        }
    }
    return daemon;
}

void EndAsLost(DaemonHistory& daemon, std::int64_t timeMs)
{
    if (daemon.Running() != nullptr) {
        daemon.intervals.back().end = IntervalEnd::kLost;
        daemon.intervals.back().endMs = timeMs;
    }
}

} // namespace

void AddStart(SupervisorRun& run, const AttributedRecord& attributed, std::int64_t latestMs)
{
    if (!attributed.event.daemonId) {
        return;
    }
    DaemonHistory& daemon = DaemonOf(run, attributed);
    EndAsLost(daemon, attributed.record.timeMs);
    ProcessInterval interval;
    interval.processId = attributed.event.processId;
    interval.startMs = attributed.record.timeMs;
    interval.latestMs = latestMs;
    interval.attached = attributed.event.kind == EventKind::kAttached;
    daemon.intervals.push_back(std::move(interval));
    daemon.state = DaemonState::kRunning;
}

void AddFailedStart(SupervisorRun& run, const AttributedRecord& attributed)
{
    if (!attributed.event.daemonId) {
        run.neverStarted[attributed.event.command].push_back(attributed.record.timeMs);
        return;
    }
    DaemonHistory& daemon = DaemonOf(run, attributed);
    EndAsLost(daemon, attributed.record.timeMs);
    daemon.failedStarts.push_back(attributed.record.timeMs);
    daemon.state = DaemonState::kCannotStart;
}

void AddEnd(SupervisorRun& run, const AttributedRecord& attributed, IntervalEnd end,
            DaemonState state)
{
    const Event& event = attributed.event;
    if (!event.daemonId) {
        return;
    }
    DaemonHistory& daemon = DaemonOf(run, attributed);
    if (daemon.intervals.empty()) {
        ProcessInterval interval;
        interval.processId = event.processId;
        interval.startMs = run.firstMs;
        interval.startSeen = false;
        daemon.intervals.push_back(std::move(interval));
    }
    // After a failed start the last interval has an end already: a stop changes only the state.
    if (daemon.Running() != nullptr) {
        ProcessInterval& interval = daemon.intervals.back();
        interval.end = end;
        interval.endMs = attributed.record.timeMs;
        interval.reason = event.reason;
        interval.stopMethod = end == IntervalEnd::kStopped ? event.count : 0;
        interval.attribution = attributed.attribution;
    }
    daemon.state = state;
}

} // namespace vqrx::client::v0
