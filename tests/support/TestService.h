#pragma once

#include "win32/UniqueHandle.h"

#include <windows.h>

#include <string>

namespace vqrx::test {

/// Owns a service in the service control manager. The destructor stops and deletes the service.
class TestService {
public:
    /// @param type       SERVICE_WIN32_OWN_PROCESS or SERVICE_WIN32_SHARE_PROCESS
    /// @param startType  SERVICE_DEMAND_START or SERVICE_DISABLED
    /// @param holdEvent  the service stays start-pending until this event is signalled; empty for
    ///                   none
    /// @param pendingMs  after holdEvent the service stays start-pending for this many milliseconds
    /// @throws HostRefusal  if the machine has a service of this name
    /// @throws std::runtime_error if the service cannot be created
    explicit TestService(const std::string& name, DWORD type = SERVICE_WIN32_OWN_PROCESS,
                         DWORD startType = SERVICE_DEMAND_START, DWORD pendingMs = 0,
                         const std::string& holdEvent = {});
    TestService(const TestService&) = delete;
    TestService& operator=(const TestService&) = delete;
    ~TestService();

    /// Starts the service.
    /// @param wait  true waits until the service runs
    /// @throws std::runtime_error if the service does not start
    void Start(bool wait = true);
    /// @return false if the service does not reach the state within a minute
    [[nodiscard]] bool WaitForState(DWORD state) const;
    [[nodiscard]] DWORD ProcessId() const;

private:
    [[nodiscard]] SERVICE_STATUS_PROCESS Status() const;

    system::win32::v1::UniqueServiceHandle manager_;
    system::win32::v1::UniqueServiceHandle service_;
};

/// For a test of a machine without a service of this name.
/// @throws HostRefusal  if there is such a service, as the firewall service of Windows
void RequireNoService(const std::string& name);

} // namespace vqrx::test
