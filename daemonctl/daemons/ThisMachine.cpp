#include "ThisMachine.h"

#include "InstalledPaths.h"
#include "LogFile.h"
#include "ProcessFacts.h"
#include "ProcessList.h"
#include "TimelineBuilder.h"

#include <stdexcept>
#include <utility>

namespace vqrx::client::v0 {

Timeline ReadTimeline(const std::string& path)
{
    try {
        return BuildTimeline(ReadLogFile(path.empty() ? DefaultLogPath() : path));
    } catch (const std::runtime_error& error) {
        throw LogUnreadable(error.what());
    }
}

const SupervisorRun& RunOfThisMachine(const Timeline& timeline)
{
    const SupervisorRun* const run = RunThatGoesOn(timeline);
    if (run == nullptr) {
        throw LogUnreadable("the log does not show the supervisor that is running; see "
                            "daemonctl doctor");
    }
    return *run;
}

ProcessSource SourceOfThisMachine()
{
    return {ReadProcessFacts, IsSameFile, CommandOfService, ArgumentsOfProcess, DefaultAppFolder()};
}

std::vector<ProcessFacts> ChildrenOfSupervisor()
{
    const std::vector<ImageFacts> supervisors = ProcessesOfImage(L"DaemonManager.exe");
    std::vector<ProcessFacts> children;
    if (supervisors.size() != 1) {
        return children;
    }
    const std::uint32_t supervisor = supervisors.front().processId;
    const std::int64_t supervisorCreatedMs = ReadProcessFacts(supervisor).createdMs;
    for (ProcessFacts& facts : RunningChildren(supervisor)) {
        // Windows gives out process ids again. If a process is older than the supervisor, its
        // parent was an earlier process with the supervisor's id.
        if (facts.createdMs >= supervisorCreatedMs) {
            children.push_back(std::move(facts));
        }
    }
    return children;
}

} // namespace vqrx::client::v0
