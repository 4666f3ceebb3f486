#include "WaitCondition.h"

namespace vqrx::client::v0 {
namespace {

// A client may have let the daemon go, or stopped it in vain: its process is there all the same.
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

// A process that may not be asked about is there; by its time of creation it is known again.
bool HasEnded(const Observation& first, const ProcessFacts& facts)
{
    return facts.state == ProcessFacts::State::gone ||
           (facts.state == ProcessFacts::State::running && facts.createdMs != first.createdMs);
}

} // namespace

RunMark MarkOf(const SupervisorRun& run)
{
    return {run.startedMs, run.beginningSeen, run.lastNumber};
}

bool IsSameRun(const RunMark& before, const RunMark& now)
{
    if (now.startedMs && before.startedMs) {
        return *now.startedMs == *before.startedMs;
    }
    if (now.startedMs) { // it was still to come, or is another's
        return before.beginningSeen;
    }
    // The start is overwritten. The last record is as new as it was, or newer.
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
    if (FitProcess(*logged, facts, source.appFolder, source.sameFile) == ProcessFit::same) {
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
    case WaitFor::running:
        return now.running;
    case WaitFor::ended:
        return now.known && (first.processId ? HasEnded(first, facts(*first.processId))
                                             : !now.processId.has_value());
    case WaitFor::restarted:
        break;
    }
    return now.known && now.running && now != first;
}

} // namespace vqrx::client::v0
