#include "ThisMachine.h"

#include "FilePresence.h"
#include "InstalledPaths.h"
#include "LogFile.h"
#include "ProcessFacts.h"
#include "ProcessList.h"
#include "RunOfProcess.h"
#include "SupervisorProcesses.h"
#include "TimeText.h"
#include "TimelineBuilder.h"
#include "ring_format/DamagedRing.h"

#include <algorithm>
#include <iterator>
#include <stdexcept>
#include <utility>

namespace vqrx::client::v0 {
namespace {

const SupervisorRun& OrNotShown(const SupervisorRun* run)
{
    if (run == nullptr) {
        throw LogUnreadable(kRunNotShown);
    }
    return *run;
}

} // namespace

Timeline ReadTimeline(const std::string& path)
{
    try {
        return BuildTimeline(ReadLogFile(path.empty() ? DefaultLogPath() : path));
    } catch (const std::runtime_error& error) {
        throw LogUnreadable(error.what());
    }
}

Timeline ReadTimelineAfter(const std::string& formerLog)
{
    try {
        std::vector<Record> records;
        if (!formerLog.empty()) {
            records = ReadLogFile(formerLog);
        }
        std::vector<Record> present = ReadLogFile(DefaultLogPath());
        records.insert(records.end(), std::make_move_iterator(present.begin()),
                       std::make_move_iterator(present.end()));
        return BuildTimeline(records);
    } catch (const std::runtime_error& error) {
        throw LogUnreadable(error.what());
    }
}

std::vector<std::string> DamagedLogs()
{
    try {
        std::vector<std::string> found;
        for (const std::string& log : system::ring_format::v1::DamagedRingsOf(DefaultLogPath())) {
            if (IsFile(log)) {
                found.push_back(log);
            }
        }
        return found;
    } catch (const std::runtime_error& error) {
        throw LogUnreadable(error.what());
    }
}

bool IsRunOfProcess(const SupervisorRun& run, const ProcessFacts& supervisor)
{
    StartOfSupervisor start{supervisor.createdMs, {}, {}};
    if (IsRunOf(run, start)) {
        return true;
    }
    for (const ProcessFacts& child : RunningChildren(supervisor.processId)) {
        start.children.push_back({child.processId, child.createdMs});
    }
    return IsRunOf(run, start);
}

const SupervisorRun* FindRunOfThisMachine(const Timeline& timeline)
{
    const SupervisorRun* const run = RunThatGoesOn(timeline);
    if (run == nullptr) {
        return nullptr;
    }
    try {
        const std::vector<ProcessFacts> running = SupervisorProcesses().Running();
        const bool isShown =
            running.empty() ||
            std::any_of(running.begin(), running.end(), [run](const ProcessFacts& process) {
                return IsRunOfProcess(*run, process);
            });
        return isShown ? run : nullptr;
    } catch (const ProcessListUnreadable&) {
        return run; // as if this user might not examine the processes
    }
}

const SupervisorRun& RunOfThisMachine(const Timeline& timeline)
{
    return OrNotShown(FindRunOfThisMachine(timeline));
}

const SupervisorRun& RunKnownToGoOn(const Timeline& timeline)
{
    return OrNotShown(RunThatGoesOn(timeline));
}

ProcessSource SourceOfThisMachine()
{
    return {ReadProcessFacts, IsSameFile, CommandOfService, ArgumentsOfProcess, DefaultAppFolder()};
}

DaemonsNow ReadDaemons(const std::vector<ProcessFacts>& children)
{
    return DaemonsIn(ReadTimeline(), children);
}

DaemonsNow DaemonsIn(const Timeline& timeline, const std::vector<ProcessFacts>& children)
{
    return DaemonsOf(RunOfThisMachine(timeline), children);
}

DaemonsNow DaemonsOf(const SupervisorRun& run, const std::vector<ProcessFacts>& children)
{
    DaemonsNow now{run, NowMs(), {}};
    now.daemons = StatusOfDaemons(now.run, SourceOfThisMachine(), now.nowMs, children);
    return now;
}

std::vector<ProcessFacts> ChildrenOfSupervisor()
{
    std::vector<ProcessFacts> children;
    for (const std::uint32_t supervisor : FindSupervisors()) {
        const std::int64_t supervisorCreatedMs = ReadProcessFacts(supervisor).createdMs;
        for (ProcessFacts& facts : RunningChildren(supervisor)) {
            // Windows gives out process ids again. If a process is older than the supervisor, its
            // parent was an earlier process with the supervisor's id.
            if (facts.createdMs >= supervisorCreatedMs) {
                children.push_back(std::move(facts));
            }
        }
    }
    return children;
}

} // namespace vqrx::client::v0
