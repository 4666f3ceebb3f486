#include "SupervisorProcesses.h"

#include "ProcessList.h"

#include <windows.h>

#include <algorithm>
#include <utility>

namespace vqrx::client::v0 {
namespace {

constexpr const wchar_t* kSupervisorProgram = L"DaemonManager.exe";
constexpr DWORD kLookAgainMs = 50;

// For a process that this user may not open: nothing but the list of processes shows its end.
bool IsListed(std::uint32_t processId)
{
    const std::vector<ImageFacts> listed = ProcessesOfImage(kSupervisorProgram);
    return std::any_of(listed.begin(), listed.end(), [processId](const ImageFacts& image) {
        return image.processId == processId;
    });
}

bool StillRuns(const ProcessFacts& facts)
{
    return facts.state == ProcessFacts::State::running ||
           (facts.state == ProcessFacts::State::hidden && IsListed(facts.processId));
}

} // namespace

SupervisorProcesses::SupervisorProcesses()
{
    for (const ImageFacts& image : ProcessesOfImage(kSupervisorProgram)) {
        processes_.emplace_back(image.processId);
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
