#include "ProcessInfo.h"

#include "DaemonText.h"

#include <utility>

namespace vqrx::system::daemon::daemon_mgr::v0 {

// Copies the texts instead of moving them, so that `other` keeps them, as the header promises.
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
    // The handles move last: after the copies nothing can throw.
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

std::string DaemonDescription(const ProcessInfo& daemon)
{
    const std::string command = daemon.isService
                                    ? daemon.serviceName
                                    : DescribeCommand(daemon.executablePath, daemon.arguments);
    return DescribeDaemon(daemon.daemonId, daemon.processId, command);
}

} // namespace vqrx::system::daemon::daemon_mgr::v0
