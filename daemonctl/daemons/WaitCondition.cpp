#include "WaitCondition.h"

namespace vqrx::client::v0 {
namespace {

// Returns the last process of a daemon, also if the supervisor no longer supervises it: after a
// detach or a failed stop the process runs on.
std::optional<LoggedProcess> LastProcessOrLetGo(const DaemonHistory& daemon,
                                                const ProcessSource& source)
{
    if (daemon.state != DaemonState::kDetached && daemon.state != DaemonState::kStopFailed) {
        return daemon.IsRegistered() ? LastProcessOf(daemon, source) : std::nullopt;
    }
    DaemonHistory before = daemon;
    if (!before.intervals.empty() && (before.intervals.back().end == IntervalEnd::kDetached ||
                                      before.intervals.back().end == IntervalEnd::kStopFailed)) {
        before.intervals.back().end = IntervalEnd::kRunning;
    }
    return LastProcessOf(before, source);
}

// A process that this user may not examine has not ended. If another process has the id now, its
// time of creation is different.
bool HasEnded(const Observation& first, const ProcessFacts& facts)
{
    return facts.state == ProcessFacts::State::kGone ||
           (facts.state == ProcessFacts::State::kRunning && facts.createdMs != first.createdMs);
}

} // namespace

RunMark MarkOf(const SupervisorRun& run)
{
    return {run.startedMs, run.beginningSeen, run.firstNumber, run.lastNumber};
}

bool IsSameRun(const RunMark& before, const RunMark& now)
{
    // All records of the run are newer than the earlier reading: the run began after it. The log
    // may not show the start of the run yet.
    if (now.beginningSeen && now.firstNumber && before.lastNumber &&
        *now.firstNumber > *before.lastNumber) {
        return false;
    }
    if (now.startedMs && before.startedMs) {
        return *now.startedMs == *before.startedMs;
    }
    if (now.startedMs) {
        // The earlier reading saw the first records of its run, but no start: the start was not
        // logged yet. Now it is.
        return before.beginningSeen;
    }
    // The record of the start is overwritten. In the same run the record numbers only grow.
    return !now.lastNumber || !before.lastNumber || *now.lastNumber >= *before.lastNumber;
}

Observation Observe(const SupervisorRun& run, std::uint32_t daemonId, const ProcessSource& source)
{
    Observation observation;
    const DaemonHistory* const daemon = run.Find(daemonId);
    if (daemon == nullptr) {
        return observation;
    }
    observation.known = true;
    const auto logged = LastProcessOrLetGo(*daemon, source);
    if (!logged) {
        return observation;
    }
    const ProcessFacts facts = source.facts(logged->processId);
    if (FitProcess(*logged, facts, source.appFolder, source.sameFile) == ProcessFit::kSame) {
        observation.running = daemon->IsRegistered();
        observation.letGo = !observation.running;
        observation.processId = logged->processId;
        observation.startedMs = logged->loggedMs;
        observation.createdMs = facts.createdMs;
    }
    return observation;
}

bool IsFulfilled(WaitFor what, const Observation& first, const Observation& now,
                 const std::function<ProcessFacts(std::uint32_t processId)>& facts)
{
    switch (what) {
    case WaitFor::kRunning:
        return now.running;
    case WaitFor::kEnded:
        return now.known && (first.processId ? HasEnded(first, facts(*first.processId))
                                             : !now.processId.has_value());
    case WaitFor::kRestarted:
        break;
    }
    return now.known && now.running && now != first;
}

} // namespace vqrx::client::v0
