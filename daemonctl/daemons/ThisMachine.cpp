#include "daemons/ThisMachine.h"

#include "LogPath.h"
#include "Utf8.h"
#include "log_reader/LogFile.h"
#include "process/ProcessFacts.h"
#include "process/ProcessList.h"

#include <windows.h>

#include <filesystem>
#include <fstream>
#include <iterator>

namespace vqrx::client::v0 {
namespace {

constexpr std::string_view kUtf16Mark = "\xFF\xFE";
constexpr std::string_view kLogBelowRoot = R"(\Logs\DaemonManager.log)";

bool IsConsoleHost(const std::string& image)
{
    return image.ends_with("\\conhost.exe");
}

} // namespace

Timeline ReadTimeline()
{
    try {
        return BuildTimeline(ReadLogFile(DefaultLogPath()));
    } catch (const std::runtime_error& error) {
        throw LogUnreadable(error.what());
    }
}

const SupervisorRun& RunOfThisMachine(const Timeline& timeline)
{
    const SupervisorRun* const run = RunThatGoesOn(timeline);
    if (run == nullptr) {
        throw LogUnreadable("the log does not tell of the supervisor that is running; see "
                            "daemonctl doctor");
    }
    return *run;
}

ProcessSource SourceOfThisMachine()
{
    std::string root = DefaultLogPath();
    root.resize(root.size() - kLogBelowRoot.size());
    return {ReadProcessFacts, IsSameFile, CommandOfService, ArgumentsOfProcess, root + "\\App"};
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
    for (const std::uint32_t processId : ChildrenOfProcess(supervisor)) {
        ProcessFacts facts = ReadProcessFacts(processId);
        // A process that is older than its parent is the child of one that had this id before.
        if (facts.state == ProcessFacts::State::running && facts.createdMs >= supervisorCreatedMs &&
            !IsConsoleHost(facts.image)) {
            children.push_back(std::move(facts));
        }
    }
    return children;
}

std::string ReadTextFile(const std::string& path)
{
    std::ifstream file(std::filesystem::path(Wide(path)), std::ios::binary);
    if (!file) {
        throw std::runtime_error(path + " cannot be read");
    }
    std::string bytes((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    if (!bytes.starts_with(kUtf16Mark)) {
        return bytes;
    }
    std::wstring wide;
    for (std::size_t index = kUtf16Mark.size(); index + 1 < bytes.size(); index += 2) {
        const auto low = static_cast<unsigned char>(bytes[index]);
        const auto high = static_cast<unsigned char>(bytes[index + 1]);
        wide += static_cast<wchar_t>(low | (high << 8U));
    }
    return Utf8(wide);
}

} // namespace vqrx::client::v0
