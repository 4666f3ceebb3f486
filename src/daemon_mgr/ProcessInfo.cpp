#include "ProcessInfo.h"

#include "DaemonText.h"

#include <utility>

namespace vqrx::system::daemon::daemon_mgr::v0 {

// Copies all but the handles, as the table's users expect of a record that was taken.
// NOLINTBEGIN(performance-noexcept-move-constructor,performance-move-constructor-init,cert-oop11-cpp)
ProcessInfo::ProcessInfo(ProcessInfo&& other)
    : executablePath(other.executablePath)
    , arguments(other.arguments)
    , processId(other.processId)
    , isService(other.isService)
    , serviceName(other.serviceName)
    , attached(other.attached)
    , restarts(other.restarts)
    , daemonId(other.daemonId)
    , readableProcess(other.readableProcess)
// NOLINTEND(performance-noexcept-move-constructor,performance-move-constructor-init,cert-oop11-cpp)
{
    // Last, when nothing can fail any more.
    process = std::move(other.process);
    service = std::move(other.service);
}

// NOLINTNEXTLINE(performance-noexcept-move-constructor)
ProcessInfo& ProcessInfo::operator=(ProcessInfo&& other)
{
    if (this != &other) {
        std::string path = other.executablePath;
        std::vector<std::string> argumentList = other.arguments;
        std::string name = other.serviceName;
        executablePath.swap(path);
        arguments.swap(argumentList);
        serviceName.swap(name);
        processId = other.processId;
        isService = other.isService;
        attached = other.attached;
        restarts = other.restarts;
        daemonId = other.daemonId;
        readableProcess = other.readableProcess;
        process = std::move(other.process);
        service = std::move(other.service);
    }
    return *this;
}

ProcessInfo::~ProcessInfo()
{
    service.Reset();
    process.Reset();
}

std::string DaemonDescription(const ProcessInfo& record)
{
    const std::string command = record.isService
                                    ? record.serviceName
                                    : DescribeCommand(record.executablePath, record.arguments);
    return DescribeDaemon(record.daemonId, record.processId, command);
}

} // namespace vqrx::system::daemon::daemon_mgr::v0
