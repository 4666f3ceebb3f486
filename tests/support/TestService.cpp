#include "TestService.h"

#include "ChildProcess.h"
#include "HostRefusal.h"
#include "PausedLooks.h"

#include <stdexcept>

namespace vqrx::test {
namespace {

constexpr ULONGLONG kDeadlineMs = 180000; // only a failure reaches it

} // namespace

TestService::TestService(const std::string& name, DWORD type, DWORD startType, DWORD pendingMs,
                         const std::string& holdEvent)
    : manager_(OpenSCManagerA(nullptr, nullptr, SC_MANAGER_ALL_ACCESS))
{
    const std::string command = "\"" + TestProgram("test_service") + "\" " + name + " " +
                                std::to_string(pendingMs) +
                                (holdEvent.empty() ? "" : " " + holdEvent);
    for (PausedLooks looks(kDeadlineMs);; looks.Pause()) {
        service_.Reset(CreateServiceA(manager_.Get(), name.c_str(), ("Test " + name).c_str(),
                                      SERVICE_ALL_ACCESS, type, startType, SERVICE_ERROR_IGNORE,
                                      command.c_str(), nullptr, nullptr, nullptr, nullptr,
                                      nullptr));
        if (service_) {
            return;
        }
        const DWORD error = GetLastError();
        if (error == ERROR_SERVICE_EXISTS) {
            throw HostRefusal("it has a service " + name + " of its own");
        }
        // A deleted service keeps its name until the service manager notices the end of its
        // process.
        if (error != ERROR_SERVICE_MARKED_FOR_DELETE || looks.IsOver()) {
            throw std::runtime_error("cannot create service " + name + ": " +
                                     std::to_string(error));
        }
    }
}

TestService::~TestService()
{
    const DWORD processId = ProcessId();
    SERVICE_STATUS status{};
    ControlService(service_.Get(), SERVICE_CONTROL_STOP, &status);
    if (processId != 0) {
        KillProcess(processId);
    }
    DeleteService(service_.Get());
}

void TestService::Start(bool wait)
{
    if (StartServiceA(service_.Get(), 0, nullptr) == FALSE) {
        throw std::runtime_error("cannot start the service: " + std::to_string(GetLastError()));
    }
    if (wait && !WaitForState(SERVICE_RUNNING)) {
        throw std::runtime_error("the service does not reach the state SERVICE_RUNNING");
    }
}

SERVICE_STATUS_PROCESS TestService::Status() const
{
    SERVICE_STATUS_PROCESS status{};
    DWORD needed = 0;
    QueryServiceStatusEx(service_.Get(), SC_STATUS_PROCESS_INFO, reinterpret_cast<BYTE*>(&status),
                         sizeof status, &needed);
    return status;
}

bool TestService::WaitForState(DWORD state) const
{
    PausedLooks looks(kDeadlineMs); // the service manager has no event for a state under Wine
    while (Status().dwCurrentState != state) {
        if (looks.IsOver()) {
            return false;
        }
        looks.Pause();
    }
    return true;
}

DWORD TestService::ProcessId() const
{
    return Status().dwProcessId;
}

void RequireNoService(const std::string& name)
{
    const system::win32::v1::UniqueServiceHandle manager(
        OpenSCManagerA(nullptr, nullptr, SC_MANAGER_CONNECT));
    if (system::win32::v1::UniqueServiceHandle(
            OpenServiceA(manager.Get(), name.c_str(), SERVICE_QUERY_STATUS))) {
        throw HostRefusal("it has a service " + name + " of its own");
    }
}

} // namespace vqrx::test
