#include "FleetSource.h"

#include "ProcessFacts.h"
#include "ProcessList.h"
#include "ThisMachine.h"
#include "Utf8.h"
#include "WindowsService.h"
#include "daemon_manager/ArgumentRules.h"

#include <windows.h>

#include <string>
#include <vector>

namespace vqrx::client::v0 {
namespace {

std::vector<UnwatchedProgram> OrphansOf(const std::string& fileName)
{
    std::vector<UnwatchedProgram> orphans;
    for (const std::uint32_t processId : OrphansOfImage(Wide(fileName))) {
        const ProcessFacts facts = ReadProcessFacts(processId);
        if (facts.state == ProcessFacts::State::kRunning) {
            orphans.push_back({facts, ReadArguments(processId)});
        }
    }
    return orphans;
}

bool FileExists(const std::string& path)
{
    const DWORD attributes = GetFileAttributesW(Wide(path).c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0;
}

std::string ReasonToRefuseLine(const std::string& path, const std::vector<std::string>& arguments)
{
    return daemon_manager::ReasonToRefuse(Wide(path), Wide(arguments));
}

} // namespace

FleetSource FleetSourceOfThisMachine()
{
    const ProcessSource processes = SourceOfThisMachine();
    FleetSource source;
    source.appFolder = processes.appFolder;
    source.sameFile = processes.sameFile;
    source.fileExists = FileExists;
    source.serviceExists = ServiceExists;
    source.orphansOf = OrphansOf;
    source.reasonToRefuse = ReasonToRefuseLine;
    return source;
}

} // namespace vqrx::client::v0
