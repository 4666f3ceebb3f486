#include "FleetSource.h"

#include "FilePresence.h"
#include "LetterCase.h"
#include "ProcessFacts.h"
#include "ProcessList.h"
#include "ThisMachine.h"
#include "Utf8.h"
#include "WindowsService.h"
#include "daemon_manager/ArgumentRules.h"

#include <cstdint>
#include <string>
#include <vector>

namespace vqrx::client::v0 {
namespace {

std::vector<UnwatchedProgram> OrphansOf(const std::string& fileName,
                                        const std::vector<std::uint32_t>& unwatched)
{
    std::vector<UnwatchedProgram> orphans;
    for (const std::uint32_t processId : OrphansOfImage(Wide(fileName))) {
        const ProcessFacts facts = ReadProcessFacts(processId);
        if (facts.state == ProcessFacts::State::kRunning) {
            orphans.push_back({facts, ReadArguments(processId)});
        }
    }
    for (const std::uint32_t processId : unwatched) {
        const ProcessFacts facts = ReadProcessFacts(processId);
        if (facts.state == ProcessFacts::State::kRunning &&
            WithoutCase(facts.image).ends_with("\\" + WithoutCase(fileName))) {
            orphans.push_back({facts, ReadArguments(processId)});
        }
    }
    return orphans;
}

std::string ReasonToRefuseLine(const std::string& path, const std::vector<std::string>& arguments)
{
    return daemon_manager::ReasonToRefuse(Wide(path), Wide(arguments));
}

} // namespace

FleetSource FleetSourceOfThisMachine(const std::vector<std::uint32_t>& unwatched)
{
    const ProcessSource processes = SourceOfThisMachine();
    FleetSource source;
    source.appFolder = processes.appFolder;
    source.sameFile = processes.sameFile;
    source.fileExists = IsFile;
    source.serviceExists = ServiceExists;
    source.orphansOf = [unwatched](const std::string& fileName) {
        return OrphansOf(fileName, unwatched);
    };
    source.reasonToRefuse = ReasonToRefuseLine;
    return source;
}

} // namespace vqrx::client::v0
