#include "LaunchedDaemon.h"

#include "ExitCode.h"
#include "InstalledPaths.h"
#include "LaunchPath.h"
#include "ThisMachine.h"
#include "TimeText.h"
#include "Utf8.h"
#include "WatchDaemon.h"

#include <windows.h>

#include <exception>
#include <iostream>
#include <optional>
#include <string>
#include <vector>

namespace vqrx::client::v0 {
namespace {

constexpr std::int64_t kRunsForGoodMs = 2000; // two passes of the supervisor

PathKind KindOfPath(const std::string& path)
{
    const DWORD attributes = GetFileAttributesW(Wide(path).c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES) {
        const DWORD error = GetLastError();
        return error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND ? PathKind::kMissing
                                                                              : PathKind::kUnknown;
    }
    return (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0 ? PathKind::kFolder : PathKind::kFile;
}

std::string DescribeAbsence(const Observation& now)
{
    if (now.running) {
        return "its present process is younger than 2 s; see: daemonctl ps";
    }
    return now.known ? "it has no process; see: daemonctl log --tail 10"
                     : "its start failed, or was not tried yet; see: daemonctl log --tail 10";
}

void WarnOf(const std::string& warning)
{
    std::cerr << "daemonctl: warning: " << warning << std::endl;
}

} // namespace

std::vector<std::string> WarningsAboutProgram(const std::string& path)
{
    std::string appFolder;
    try {
        appFolder = DefaultAppFolder();
    } catch (const std::runtime_error&) { // NOLINT(bugprone-empty-catch): then it is not known
    }
    return WarningsAboutPath(path, appFolder, KindOfPath);
}

void WarnAboutProgram(const std::string& path, std::uint32_t daemonId)
{
    const std::vector<std::string> warnings = WarningsAboutProgram(path);
    for (const std::string& warning : warnings) {
        WarnOf(warning);
    }
    if (!warnings.empty()) {
        std::cerr << "  To undo this: daemonctl stop " << daemonId << std::endl;
    }
}

int WaitUntilItRuns(std::uint32_t daemonId, std::uint32_t seconds)
{
    const auto runsForGood = [](const Observation& /*first*/, const Observation& latest) {
        return latest.running && NowMs() - latest.createdMs >= kRunsForGoodMs;
    };
    Observation now;
    switch (WatchDaemon(daemonId, seconds, SourceOfThisMachine(), runsForGood, now)) {
    case WatchEnd::kFulfilled:
        std::cout << "daemon " << daemonId << " runs as process " << *now.processId << std::endl;
        return kDone;
    case WatchEnd::kTimeOver:
        std::cerr << "daemonctl: daemon " << daemonId << " has not run for 2 s after " << seconds
                  << " s: " << DescribeAbsence(now)
                  << "\n  To see what happened: daemonctl log --tail 10 --daemon " << daemonId
                  << std::endl;
        return kNothingToDo;
    case WatchEnd::kSupervisorEnded:
        break;
    }
    std::cerr << "daemonctl: the supervisor has ended\n  To see what runs on: daemonctl ps"
              << std::endl;
    return kNoSupervisor;
}

void WarnAboutSecondAttach(std::uint32_t processId, std::uint32_t daemonId)
{
    std::optional<std::uint32_t> former;
    try {
        const Timeline timeline = ReadTimeline();
        former = OtherDaemonOfProcess(RunOfThisMachine(timeline), processId, daemonId);
    } catch (const LogUnreadable&) { // NOLINT(bugprone-empty-catch): then nobody knows
    }
    if (former) {
        WarnOf("process " + std::to_string(processId) + " was daemon " + std::to_string(*former) +
               " already, so the supervisor will start its program twice after its end\n  To undo "
               "this: daemonctl detach " +
               std::to_string(daemonId));
    }
}

} // namespace vqrx::client::v0
