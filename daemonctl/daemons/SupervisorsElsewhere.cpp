#include "SupervisorsElsewhere.h"

#include "ProcessList.h"
#include "SupervisorProcesses.h"
#include "daemon_manager/SupervisorIdentity.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <set>
#include <utility>

namespace vqrx::client::v0 {
namespace {

// The times of creation and the times of records come from clocks of different resolution.
constexpr std::int64_t kRecordGrainMs = 1000;

// Returns the processes that no record shows to have ended.
std::vector<ProcessInterval> OpenIntervals(const Timeline& timeline)
{
    std::vector<ProcessInterval> open;
    for (const SupervisorRun& run : timeline.runs) {
        for (const auto& [id, daemon] : run.daemons) {
            std::copy_if(daemon.intervals.begin(), daemon.intervals.end(), std::back_inserter(open),
                         [](const ProcessInterval& interval) {
                             return interval.processId && !interval.endMs;
                         });
        }
    }
    return open;
}

// Windows gives ids again: a parent is older than its child, and a child older than its record.
bool IsParent(const ProcessFacts& parent, const ProcessFacts& child,
              const ProcessInterval& interval)
{
    return parent.state == ProcessFacts::State::kRunning &&
           child.state == ProcessFacts::State::kRunning && parent.createdMs <= child.createdMs &&
           child.createdMs <= interval.startMs + kRecordGrainMs;
}

} // namespace

std::vector<HeldProcess> SupervisorsElsewhere(const Timeline& timeline)
{
    std::vector<HeldProcess> supervisors;
    std::set<std::uint32_t> candidates;
    for (const ImageFacts& image : ProcessesOfImage(daemon_manager::kSupervisorProgram)) {
        candidates.insert(image.processId);
    }
    for (const std::uint32_t installed : FindSupervisors()) {
        candidates.erase(installed);
    }
    if (candidates.empty()) { // nearly always: spares a look at each process of the log
        return supervisors;
    }
    for (const ProcessInterval& interval : OpenIntervals(timeline)) {
        const std::optional<std::uint32_t> parentId = ParentOfProcess(*interval.processId);
        if (!parentId || !candidates.contains(*parentId)) {
            continue;
        }
        HeldProcess parent(*parentId);
        if (IsParent(parent.Facts(), ReadProcessFacts(*interval.processId), interval)) {
            candidates.erase(*parentId);
            supervisors.push_back(std::move(parent));
        }
    }
    return supervisors;
}

} // namespace vqrx::client::v0
