#include "ShutdownProgress.h"

namespace vqrx::client::v0 {
namespace {

// Returns the run if the log shows its end. The last run in the log is a former one if the records of
// this one are missing.
const SupervisorRun* EndedRun(const Timeline& timeline, const std::optional<RunMark>& run)
{
    if (!run || timeline.runs.empty()) {
        return nullptr;
    }
    const SupervisorRun& last = timeline.runs.back();
    return last.endSeen && IsSameRun(*run, MarkOf(last)) ? &last : nullptr;
}

} // namespace

std::string DescribeShutdown(const Timeline& timeline, const std::optional<RunMark>& run)
{
    if (EndedRun(timeline, run) == nullptr) {
        return "A call of a client is under way, such as a stop; until it ends, the supervisor still "
               "restarts its daemons. Or its console has stopped: press Esc in its window.";
    }
    return "It no longer restarts daemons, but it has not left COM. Or its console has stopped: press "
           "Esc in its window.";
}

std::string DescribeEnd(const Timeline& timeline, const std::optional<RunMark>& run)
{
    const SupervisorRun* const ended = EndedRun(timeline, run);
    if (ended == nullptr) {
        return "the supervisor has ended; its daemons run on";
    }
    const std::uint32_t count = ended->stillRegistered.value_or(0); // no record means none
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
