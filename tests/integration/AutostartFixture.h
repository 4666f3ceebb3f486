#pragma once

#include "ChildProcess.h"
#include "Daemonctl.h"
#include "GuardedMachine.h"
#include "SupervisorProcess.h"
#include "win32/UniqueHandle.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <string>

namespace vqrx::test {

/// daemonctl autostart with the real service manager and the Run key. The destructor ends the guard
/// and removes its entries.
class Autostart : public ::testing::Test {
protected:
    Autostart() { static_cast<void>(Daemonctl("autostart remove")); }
    ~Autostart() override
    {
        SERVICE_STATUS status{};
        ControlService(Service().Get(), SERVICE_CONTROL_STOP, &status);
        EXPECT_TRUE(WaitUntil([] { return ProcessesNamed("DaemonGuard.exe").empty(); }));
        static_cast<void>(Daemonctl("autostart remove"));
    }
    Autostart(const Autostart&) = delete;
    Autostart& operator=(const Autostart&) = delete;

    static system::win32::v1::UniqueServiceHandle Service()
    {
        const system::win32::v1::UniqueServiceHandle manager(
            OpenSCManagerW(nullptr, nullptr, SC_MANAGER_CONNECT));
        return system::win32::v1::UniqueServiceHandle(
            OpenServiceW(manager.Get(), L"DaemonGuard", SERVICE_ALL_ACCESS));
    }

    static SERVICE_STATUS Status()
    {
        SERVICE_STATUS status{};
        QueryServiceStatus(Service().Get(), &status);
        return status;
    }

    static DWORD State() { return Status().dwCurrentState; }

    static std::string Guard(const std::string& options)
    {
        return '"' + ProductProgram("DaemonGuard.exe") + "\" " + options;
    }

    // What start and install print: no program of a desktop finds the supervisor of a service.
    [[nodiscard]] std::string StartedAsService() const
    {
        return "the guard was started now; to see what it does: daemonctl log --file \"" +
               machine_.GuardLog() +
               "\"\nprograms of a desktop do not find the supervisor of a service: daemonctl wait "
               "--for supervisor needs a task of the account SYSTEM\n";
    }

    GuardedMachine machine_;
    const std::string worker_ = TestProgram("no_windows");
};

} // namespace vqrx::test
