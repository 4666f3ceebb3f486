#include "ShutdownProgress.h"

namespace vqrx::client::v0 {
namespace {

// Returns the run in the log; null if the log does not show it. The last run in the log is a former
// one if the records of this one are missing.
const SupervisorRun* Find(const Timeline& timeline, const std::optional<RunMark>& run)
{
    if (!run || timeline.runs.empty()) {
        return nullptr;
    }
    const SupervisorRun& last = timeline.runs.back();
    return IsSameRun(*run, MarkOf(last)) ? &last : nullptr;
}

} // namespace

std::string DescribeShutdown(const Timeline& timeline, const std::optional<RunMark>& run)
{
    if (!ShowsOrder(timeline, run)) {
        return "Its log does not show the order: the log stands still, usually because the console has "
               "stopped. Press Esc in its window. What the supervisor does meanwhile is not known.";
    }
    if (!Find(timeline, run)->endSeen) {
        return "It waits for a call of a client that is under way, such as a stop, or for the end of a "
               "pass over its daemons; until then it still restarts them. If its console has stopped "
               "since, press Esc in its window.";
    }
    return "It no longer restarts daemons, but it has not left COM. Or its console has stopped: press "
           "Esc in its window.";
}

bool ShowsOrder(const Timeline& timeline, const std::optional<RunMark>& run)
{
    const SupervisorRun* const found = Find(timeline, run);
    return found != nullptr && (found->exitRequested || found->endSeen);
}

std::string DescribeEnd(const Timeline& timeline, const std::optional<RunMark>& run)
{
    const SupervisorRun* const ended = Find(timeline, run);
    if (ended == nullptr || !ended->endSeen) {
        return "the supervisor has ended; its daemons run on";
    }
    const std::uint32_t count = ended->stillRegistered.value_or(0); // no record means none
    if (count == 0) {
        return "the supervisor has ended; it had no daemons";
    }
    // Not each of them has a process: one may be in a crash loop, or its program may be missing.
    return "the supervisor has ended; " + std::to_string(count) +
           (count == 1 ? " daemon is" : " daemons are") +
           " no longer watched; what runs on: daemonctl ps";
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
