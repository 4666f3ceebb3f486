#include "daemons/WaitCondition.h"

namespace vqrx::client::v0 {

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
    const auto logged = daemon->IsRegistered() ? LastProcessOf(*daemon, source) : std::nullopt;
    observation.running =
        logged && FitProcess(*logged, source.facts(logged->processId), source.appFolder,
                             source.sameFile) == ProcessFit::same;
    if (observation.running) {
        observation.processId = logged->processId;
        observation.startedMs = logged->loggedMs;
    }
    return observation;
}

bool IsFulfilled(WaitFor what, const Observation& first, const Observation& now)
{
    switch (what) {
    case WaitFor::running:
        return now.running;
    case WaitFor::ended:
        return now.known && (!now.running || (first.running && now != first));
    case WaitFor::restarted:
        break;
    }
    return now.known && now.running && now != first;
}

} // namespace vqrx::client::v0
