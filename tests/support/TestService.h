#pragma once

#include "win32/UniqueHandle.h"

#include <windows.h>

#include <string>

namespace vqrx::test {

/// A service in the service control manager, made for a test; stopped and deleted at its end.
class TestService {
public:
    /// @param type       SERVICE_WIN32_OWN_PROCESS or SERVICE_WIN32_SHARE_PROCESS
    /// @param startType  SERVICE_DEMAND_START or SERVICE_DISABLED
    /// @param pendingMs  stays start-pending for so long
    /// @param holdEvent  before that, stays start-pending until this is signalled; empty for none
    /// @throws std::runtime_error when it cannot be made
    explicit TestService(const std::string& name, DWORD type = SERVICE_WIN32_OWN_PROCESS,
                         DWORD startType = SERVICE_DEMAND_START, DWORD pendingMs = 0,
                         const std::string& holdEvent = {});
    TestService(const TestService&) = delete;
    TestService& operator=(const TestService&) = delete;
    ~TestService();

    /// Starts it; with wait, until it runs.
    void Start(bool wait = true);
    /// @return false when it does not reach the state within a minute
    bool WaitForState(DWORD state) const;
    DWORD ProcessId() const;

private:
    SERVICE_STATUS_PROCESS Status() const;

    system::win32::v1::UniqueServiceHandle manager_;
    system::win32::v1::UniqueServiceHandle service_;
};

} // namespace vqrx::test
