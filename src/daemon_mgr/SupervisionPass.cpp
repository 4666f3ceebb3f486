#include "SupervisionPass.h"

#include "DaemonText.h"
#include "LaunchProcess.h"
#include "LogExceptions.h"

#include <array>
#include <cstddef>
#include <iterator>

namespace vqrx::system::daemon::daemon_mgr::v0 {
namespace {

using log::i_logger::v0::ILogger;
using log::i_logger::v0::kLevelError;
using log::i_logger::v0::kLevelInformation;
using log::i_logger::v0::kLevelWarning;

constexpr DWORD kUnreadableExitCode = 0xFFFFFFFF; // not STILL_ACTIVE: the process counts as ended

DWORD ExitCodeOf(ProcessInfo& daemon) noexcept
{
    DWORD code = 0;
    if (GetExitCodeProcess(daemon.process.Get(), &code) == FALSE) {
        return kUnreadableExitCode;
    }
    daemon.readableProcess = daemon.process.Get();
    return code;
}

void Start(ProcessInfo& daemon, ILogger& logger)
{
    auto process = LaunchProcess(daemon.executablePath, daemon.arguments);
    // The handle of the ended process stays open, one for each restart. As long as it is open,
    // Windows gives the process id to no other process.
    static_cast<void>(daemon.process.Release());
    daemon.process = std::move(process);
    const bool isFirstStart = daemon.restarts == 0 && !daemon.attached;
    ++daemon.restarts;
    if (daemon.process) {
        daemon.processId = GetProcessId(daemon.process.Get());
        logger.Log(isFirstStart ? kLevelInformation : kLevelWarning, "Start %s",
                   DaemonDescription(daemon).c_str());
    } else {
        logger.Log(kLevelWarning, "Unable to start %s", DaemonDescription(daemon).c_str());
    }
}

void Check(ProcessInfo& daemon, ILogger& logger)
{
    if (daemon.process) {
        const DWORD exitCode = ExitCodeOf(daemon);
        if (exitCode == STILL_ACTIVE) { // 259, also if the process ended with that code
            return;
        }
        logger.Log(kLevelError, "%s", DescribeEnd(daemon.serviceName, exitCode).c_str());
    }
    Start(daemon, logger);
}

bool CanBeAskedTogether(const ProcessInfo& daemon) noexcept
{
    return daemon.process && daemon.process.Get() == daemon.readableProcess;
}

// Moves `entry` past daemons whose processes run. One call to the system asks about up to 64
// processes, so that a pass does not have to read the exit code of each.
// @return how many daemons the caller must Check before it calls SkipRunning again:
//         - 0: all processes asked about run.
//         - 1: Check the daemon at `entry`: its process may have ended, or it must be asked alone.
//         - n: Windows refused the wait. Check the next n daemons one by one.
std::size_t SkipRunning(DaemonTable::iterator& entry, const DaemonTable::iterator& end) noexcept
{
    std::array<HANDLE, MAXIMUM_WAIT_OBJECTS> processes; // NOLINT: only the first `count` are read
    DWORD count = 0;
    auto next = entry;
    for (; next != end && count < processes.size() && CanBeAskedTogether(next->second); ++next) {
        processes.at(count++) = next->second.process.Get();
    }
    if (count == 0) {
        return 1;
    }
    const DWORD result = WaitForMultipleObjects(count, processes.data(), FALSE, 0);
    if (result == WAIT_TIMEOUT) { // no process of the group has ended
        entry = next;
        return 0;
    }
    if (result >= count) { // WAIT_FAILED
        return count;
    }
    std::advance(entry, result); // the first process of the group that has ended
    return 1;
}

} // namespace

void SupervisionPass(DaemonTable& table, ILogger& logger)
{
    // Starting a process takes time, and other processes may end meanwhile. After each start the
    // daemons that follow are therefore asked about again.
    for (auto entry = table.begin(); entry != table.end();) {
        for (std::size_t toCheck = SkipRunning(entry, table.end()); toCheck != 0; --toCheck) {
            LogExceptions(logger, [&] { Check(entry->second, logger); });
            ++entry;
        }
    }
}

} // namespace vqrx::system::daemon::daemon_mgr::v0
