#include "RunOfProcess.h"

#include <algorithm>

namespace vqrx::client::v0 {
namespace {

// Windows and the supervisor read the time of a start from clocks of different resolution.
constexpr std::int64_t kStartGrainMs = 1000;

// The longest time from the creation of a daemon's process to its record.
constexpr std::int64_t kLateRecordMs = 60000;

bool IsStartOf(const ProcessInterval& interval, const RunningChild& child) noexcept
{
    return !interval.attached && !interval.endMs && interval.processId == child.processId &&
           child.createdMs <= interval.startMs + kStartGrainMs &&
           child.createdMs >= interval.startMs - kLateRecordMs;
}

bool ShowsStartOf(const SupervisorRun& run, const RunningChild& child) noexcept
{
    return std::any_of(run.daemons.begin(), run.daemons.end(), [&](const auto& daemon) {
        const auto& intervals = daemon.second.intervals;
        return !intervals.empty() && IsStartOf(intervals.back(), child);
    });
}

} // namespace

bool IsRunOf(const SupervisorRun& run, const StartOfSupervisor& start) noexcept
{
    if (start.lastNumberBefore && run.beginningSeen && run.firstNumber &&
        *run.firstNumber > *start.lastNumberBefore) {
        return true;
    }
    const std::int64_t latestMs =
        std::max({run.firstMs, run.startedMs.value_or(run.firstMs), run.lastMs});
    return latestMs + kStartGrainMs >= start.createdMs ||
           std::any_of(start.children.begin(), start.children.end(),
                       [&](const RunningChild& child) { return ShowsStartOf(run, child); });
}

} // namespace vqrx::client::v0
