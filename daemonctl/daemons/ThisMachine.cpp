#include "ThisMachine.h"

#include "FilePresence.h"
#include "InstalledPaths.h"
#include "LogFile.h"
#include "ProcessFacts.h"
#include "ProcessList.h"
#include "SupervisorProcesses.h"
#include "TimeText.h"
#include "TimelineBuilder.h"
#include "ring_format/DamagedRing.h"

#include <iterator>
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

const SupervisorRun& RunOfThisMachine(const Timeline& timeline)
{
    const SupervisorRun* const run = RunThatGoesOn(timeline);
    if (run == nullptr) {
        throw LogUnreadable(kRunNotShown);
    }
    return *run;
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
    DaemonsNow now{RunOfThisMachine(timeline), NowMs(), {}};
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
