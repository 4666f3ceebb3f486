#include "LeftProcesses.h"

#include <algorithm>

namespace vqrx::client::v0 {
namespace {

// @return the time of the last record about a daemon: then the supervisor certainly ran. A later
//         record may come from the next supervisor, before the one with which its run begins.
std::int64_t LastOfDaemons(const SupervisorRun& run)
{
    std::int64_t lastMs = run.firstMs;
    for (const auto& [id, daemon] : run.daemons) {
        for (const ProcessInterval& interval : daemon.intervals) {
            lastMs = std::max({lastMs, interval.startMs, interval.endMs.value_or(0)});
        }
    }
    return lastMs;
}

// Adds the processes that the run still supervised at its end. Removes every other process of the
// run: the process ended, or a client stopped or detached it.
void AddRun(LeftProcesses& left, const SupervisorRun& run, const ProcessSource& source, bool isLast)
{
    const std::int64_t ranAtMs = LastOfDaemons(run);
    for (const auto& [id, daemon] : run.daemons) {
        for (const ProcessInterval& interval : daemon.intervals) {
            left.erase(interval.processId.value_or(0));
        }
        const auto logged = daemon.IsRegistered() ? LastProcessOf(daemon, source) : std::nullopt;
        if (logged) {
            left[logged->processId] = {&daemon, *logged, isLast, run.startedMs, ranAtMs};
        }
    }
}

} // namespace

const SupervisorRun* LastFormerRun(const Timeline& timeline, const SupervisorRun& current)
{
    const SupervisorRun* last = nullptr;
    for (const SupervisorRun& run : timeline.runs) {
        if (&run == &current) {
            break;
        }
        last = run.daemons.empty() && run.neverStarted.empty() ? last : &run;
    }
    return last;
}

LeftProcesses FindLeftProcesses(const Timeline& timeline, const SupervisorRun& current,
                                const ProcessSource& source)
{
    LeftProcesses left;
    const SupervisorRun* const last = LastFormerRun(timeline, current);
    for (const SupervisorRun& run : timeline.runs) {
        if (&run == &current) {
            break;
        }
        AddRun(left, run, source, &run == last);
    }
    return left;
}

} // namespace vqrx::client::v0
