#include "SupervisorsElsewhere.h"

#include "ProcessList.h"
#include "SupervisorProcesses.h"
#include "daemon_manager/SupervisorIdentity.h"

#include <windows.h>

#include <algorithm>
#include <iterator>
#include <optional>
#include <set>
#include <utility>

namespace vqrx::guard::v0 {
namespace {

using client::v0::HeldProcess;
using client::v0::ProcessFacts;

constexpr DWORD kLookAtEndMs = 50;
// The times of creation and the times of records come from clocks of different resolution.
constexpr std::int64_t kRecordGrainMs = 1000;

// Returns the processes that no record shows to have ended.
std::vector<client::v0::ProcessInterval> OpenIntervals(const client::v0::Timeline& timeline)
{
    std::vector<client::v0::ProcessInterval> open;
    for (const client::v0::SupervisorRun& run : timeline.runs) {
        for (const auto& [id, daemon] : run.daemons) {
            std::copy_if(daemon.intervals.begin(), daemon.intervals.end(), std::back_inserter(open),
                         [](const client::v0::ProcessInterval& interval) {
                             return interval.processId && !interval.endMs;
                         });
        }
    }
    return open;
}

// Windows gives ids again: a parent is older than its child, and a child older than its record.
bool IsParent(const ProcessFacts& parent, const ProcessFacts& child,
              const client::v0::ProcessInterval& interval)
{
    return parent.state == ProcessFacts::State::kRunning &&
           child.state == ProcessFacts::State::kRunning && parent.createdMs <= child.createdMs &&
           child.createdMs <= interval.startMs + kRecordGrainMs;
}

} // namespace

SupervisorsElsewhere::SupervisorsElsewhere(const client::v0::Timeline& timeline)
{
    std::set<std::uint32_t> candidates;
    for (const client::v0::ImageFacts& image :
         client::v0::ProcessesOfImage(daemon_manager::kSupervisorProgram)) {
        candidates.insert(image.processId);
    }
    for (const std::uint32_t installed : client::v0::FindSupervisors()) {
        candidates.erase(installed);
    }
    if (candidates.empty()) { // nearly always: spares a look at each process of the log
        return;
    }
    for (const client::v0::ProcessInterval& interval : OpenIntervals(timeline)) {
        const std::optional<std::uint32_t> parentId =
            client::v0::ParentOfProcess(*interval.processId);
        if (!parentId || !candidates.contains(*parentId)) {
            continue;
        }
        HeldProcess parent(*parentId);
        if (IsParent(parent.Facts(), client::v0::ReadProcessFacts(*interval.processId), interval)) {
            candidates.erase(*parentId);
            processes_.push_back(std::move(parent));
        }
    }
}

bool SupervisorsElsewhere::OneRuns() const
{
    return std::any_of(processes_.begin(), processes_.end(), [](const HeldProcess& process) {
        return process.Facts().state == ProcessFacts::State::kRunning;
    });
}

bool SupervisorsElsewhere::WaitForEnd(std::uint64_t limitMs) const
{
    const ULONGLONG start = GetTickCount64();
    while (OneRuns()) {
        if (GetTickCount64() - start >= limitMs) {
            return false;
        }
        Sleep(kLookAtEndMs);
    }
    return true;
}

} // namespace vqrx::guard::v0
