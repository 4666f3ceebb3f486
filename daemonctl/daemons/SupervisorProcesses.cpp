#include "SupervisorProcesses.h"

#include "ProcessList.h"
#include "SupervisorsElsewhere.h"
#include "daemon_manager/SupervisorIdentity.h"

#include <windows.h>

#include <algorithm>
#include <utility>

namespace vqrx::client::v0 {
namespace {

constexpr DWORD kLookAgainMs = 50;

// For a process that this user may not open: nothing but the list of processes shows its end.
bool IsListed(std::uint32_t processId)
{
    const std::vector<ImageFacts> listed = ProcessesOfImage(daemon_manager::kSupervisorProgram);
    return std::any_of(listed.begin(), listed.end(), [processId](const ImageFacts& image) {
        return image.processId == processId;
    });
}

bool StillRuns(const ProcessFacts& facts)
{
    return facts.state == ProcessFacts::State::kRunning ||
           (facts.state == ProcessFacts::State::kHidden && IsListed(facts.processId));
}

} // namespace

std::vector<std::uint32_t> FindSupervisors()
{
    const daemon_manager::SupervisorIdentity identity = daemon_manager::IdentifySupervisor();
    if (identity.listError != 0) {
        throw ProcessListUnreadable(identity.listError);
    }
    std::vector<std::uint32_t> supervisors;
    std::vector<std::uint32_t> hidden;
    for (const daemon_manager::SupervisorProcess& process : identity.processes) {
        if (identity.installedProgram.empty() ||
            (process.installedProgram && process.userKnown && process.expectedUser)) {
            supervisors.push_back(process.processId);
        } else if (process.program.empty() || (process.installedProgram && !process.userKnown)) {
            hidden.push_back(process.processId);
        }
    }
    return supervisors.empty() ? hidden : supervisors;
}

bool IsSupervisorListed()
{
    return IsImageRunning(daemon_manager::kSupervisorProgram);
}

SupervisorProcesses::SupervisorProcesses()
{
    for (const std::uint32_t processId : FindSupervisors()) {
        processes_.emplace_back(processId);
    }
}

void SupervisorProcesses::AddElsewhere(const Timeline& timeline)
{
    for (HeldProcess& process : SupervisorsElsewhere(timeline)) {
        processes_.push_back(std::move(process));
    }
}

std::vector<ProcessFacts> SupervisorProcesses::Running() const
{
    std::vector<ProcessFacts> running;
    for (const HeldProcess& process : processes_) {
        ProcessFacts facts = process.Facts();
        if (StillRuns(facts)) {
            running.push_back(std::move(facts));
        }
    }
    std::stable_sort(
        running.begin(), running.end(),
        [](const ProcessFacts& a, const ProcessFacts& b) { return a.createdMs < b.createdMs; });
    return running;
}

bool SupervisorProcesses::WaitUntilAtMost(std::size_t count, std::uint64_t limitMs) const
{
    const ULONGLONG start = GetTickCount64();
    while (Running().size() > count) {
        if (GetTickCount64() - start >= limitMs) {
            return false;
        }
        Sleep(kLookAgainMs);
    }
    return true;
}

} // namespace vqrx::client::v0
