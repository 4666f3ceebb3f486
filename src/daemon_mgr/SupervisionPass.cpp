#include "SupervisionPass.h"

#include "DaemonText.h"
#include "LaunchProcess.h"

namespace vqrx::system::daemon::daemon_mgr::v0 {
namespace {

using log::i_logger::v0::ILogger;

// An exit code that cannot be read counts as the end of the process.
DWORD ExitCodeOf(const ProcessInfo& record) noexcept
{
    DWORD code = 0;
    return GetExitCodeProcess(record.process.Get(), &code) != FALSE ? code : 0xFFFFFFFF;
}

void Start(ProcessInfo& record, ILogger& logger)
{
    auto process = LaunchProcess(record.executablePath, record.arguments);
    // The handle of the ended process is not closed, on purpose.
    static_cast<void>(record.process.Release());
    record.process = std::move(process);
    const bool isFirstStart = record.restarts == 0 && !record.attached;
    ++record.restarts;
    if (record.process) {
        record.processId = GetProcessId(record.process.Get());
        logger.Log(isFirstStart ? 2 : 1, "Start %s", DaemonDescription(record).c_str());
    } else {
        logger.Log(1, "Unable to start %s", DaemonDescription(record).c_str());
    }
}

void Check(ProcessInfo& record, ILogger& logger)
{
    if (record.process) {
        const DWORD exitCode = ExitCodeOf(record);
        if (exitCode == STILL_ACTIVE) {
            return;
        }
        logger.Log(0, "%s", DescribeEnd(record.serviceName, exitCode).c_str());
    }
    Start(record, logger);
}

} // namespace

void SupervisionPass(DaemonTable& table, ILogger& logger)
{
    for (auto& [id, record] : table) {
        Check(record, logger);
    }
}

} // namespace vqrx::system::daemon::daemon_mgr::v0
