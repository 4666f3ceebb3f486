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

// An exit code that cannot be read counts as the end of the process.
DWORD ExitCodeOf(ProcessInfo& record) noexcept
{
    DWORD code = 0;
    if (GetExitCodeProcess(record.process.Get(), &code) == FALSE) {
        return 0xFFFFFFFF;
    }
    record.readableProcess = record.process.Get();
    return code;
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

bool CanBeAskedTogether(const ProcessInfo& record) noexcept
{
    return record.process && record.process.Get() == record.readableProcess;
}

// Goes on to the first record that has to be checked by itself, past those whose processes live: up
// to 64 of them are asked with one call to the system, and their exit codes are not read.
// @return how many records have to be checked from there on before the others are asked again
std::size_t SkipLive(DaemonTable::iterator& record, const DaemonTable::iterator& end) noexcept
{
    std::array<HANDLE, MAXIMUM_WAIT_OBJECTS> processes; // NOLINT: filled as far as it is read
    DWORD count = 0;
    auto next = record;
    for (; next != end && count < processes.size() && CanBeAskedTogether(next->second); ++next) {
        processes.at(count++) = next->second.process.Get();
    }
    if (count == 0) {
        return 1;
    }
    const DWORD result = WaitForMultipleObjects(count, processes.data(), FALSE, 0);
    if (result == WAIT_TIMEOUT) {
        record = next;
        return 0;
    }
    if (result >= count) { // one of the handles cannot be waited for
        return count;
    }
    std::advance(record, result);
    return 1;
}

} // namespace

// A process that ends, or is started, changes what is known of those behind it only in that time
// has passed: they are asked again. One whose start takes more memory than there is costs the
// others nothing.
void SupervisionPass(DaemonTable& table, ILogger& logger)
{
    for (auto record = table.begin(); record != table.end();) {
        for (std::size_t toCheck = SkipLive(record, table.end()); toCheck != 0; --toCheck) {
            LogExceptions(logger, [&] { Check(record->second, logger); });
            ++record;
        }
    }
}

} // namespace vqrx::system::daemon::daemon_mgr::v0
