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
