#include "Timeline.h"

#include <algorithm>

namespace vqrx::client::v0 {
namespace {

bool HasEnd(const ProcessInterval& interval)
{
    return interval.end != IntervalEnd::kRunning;
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

} // namespace vqrx::client::v0
