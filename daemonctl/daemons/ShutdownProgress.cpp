#include "ShutdownProgress.h"

namespace vqrx::client::v0 {

std::string DescribeShutdown(const Timeline& timeline)
{
    if (timeline.runs.empty() || !timeline.runs.back().endSeen) {
        return "A call of a client is under way, such as a stop; until it ends, the supervisor still "
               "restarts its daemons. Or its console has stopped: press Esc in its window.";
    }
    return "It no longer restarts daemons, but it has not left COM. Or its console has stopped: press "
           "Esc in its window.";
}

std::string DescribeEnd(const Timeline& timeline)
{
    const SupervisorRun* const run =
        timeline.runs.empty() || !timeline.runs.back().endSeen ? nullptr : &timeline.runs.back();
    if (run == nullptr) {
        return "the supervisor has ended; its daemons run on";
    }
    const std::uint32_t count = run->stillRegistered.value_or(0); // no record means none
    if (count == 0) {
        return "the supervisor has ended; it had no daemons";
    }
    return "the supervisor has ended; " + std::to_string(count) +
           (count == 1 ? " daemon runs on without it" : " daemons run on without it");
}

std::string NamesOf(const std::vector<ProcessFacts>& processes)
{
    std::string names;
    for (const ProcessFacts& process : processes) {
        names += (names.empty() ? "process " : ", process ") + std::to_string(process.processId);
        names += process.image.empty() ? "" : " (" + process.image + ")";
    }
    return names;
}

} // namespace vqrx::client::v0
