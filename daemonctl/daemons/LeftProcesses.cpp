#include "LeftProcesses.h"

namespace vqrx::client::v0 {
namespace {

// Adds the processes that the run still supervised at its end. Removes every other process of the
// run: the process ended, or a client stopped or detached it.
void AddRun(LeftProcesses& left, const SupervisorRun& run, const ProcessSource& source, bool isLast)
{
    for (const auto& [id, daemon] : run.daemons) {
        for (const ProcessInterval& interval : daemon.intervals) {
            left.erase(interval.processId.value_or(0));
        }
        const auto logged = daemon.IsRegistered() ? LastProcessOf(daemon, source) : std::nullopt;
        if (logged) {
            left[logged->processId] = {&daemon, *logged, isLast, run.startedMs};
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
