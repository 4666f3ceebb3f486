#include "Timeline.h"

#include <algorithm>

namespace vqrx::client::v0 {
namespace {

bool HasEnd(const ProcessInterval& interval)
{
    return interval.end != IntervalEnd::kRunning;
}

// Returns whether a supervisor was refused because another one was published. A refused supervisor
// ends before it starts a daemon and before a client can call it. So its records show a start and
// an end, and nothing else.
bool WasRefused(const SupervisorRun& run)
{
    return run.beginningSeen && run.endSeen && !run.exitRequested && !run.stillRegistered &&
           run.daemons.empty() && run.neverStarted.empty() && run.unknownEnds.empty() &&
           run.failedAttaches.empty();
}

} // namespace

const ProcessInterval* DaemonHistory::Running() const noexcept
{
    return intervals.empty() || HasEnd(intervals.back()) ? nullptr : &intervals.back();
}

const ProcessInterval* DaemonHistory::LastEnded() const noexcept
{
    const auto found = std::find_if(intervals.rbegin(), intervals.rend(), HasEnd);
    return found == intervals.rend() ? nullptr : &*found;
}

const DaemonHistory* SupervisorRun::Find(std::uint32_t daemonId) const noexcept
{
    const auto found = daemons.find(daemonId);
    return found == daemons.end() ? nullptr : &found->second;
}

const SupervisorRun* RunThatGoesOn(const Timeline& timeline)
{
    const auto found = std::find_if_not(timeline.runs.rbegin(), timeline.runs.rend(), WasRefused);
    return found == timeline.runs.rend() || found->endSeen ? nullptr : &*found;
}

} // namespace vqrx::client::v0
