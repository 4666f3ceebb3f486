#pragma once

#include "ChildProcess.h"
#include "LimitedToken.h"
#include "win32/UniqueHandle.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <string>

namespace vqrx::test {

/// A process of this user without the rights of an administrator. The destructor ends it.
class LimitedProcess {
public:
    /// @param program  full path, ANSI code page; it must run until it is ended
    explicit LimitedProcess(const std::string& program = TestProgram("no_windows"))
    {
        const system::win32::v1::UniqueKernelHandle less = LimitedToken();
        std::string command = '"' + program + '"';
        STARTUPINFOA startup{};
        startup.cb = sizeof startup;
        PROCESS_INFORMATION started{};
        EXPECT_TRUE(CreateProcessAsUserA(less.Get(), nullptr, command.data(), nullptr, nullptr,
                                         FALSE, 0, nullptr, nullptr, &startup, &started));
        process_.Reset(started.hProcess);
        const system::win32::v1::UniqueKernelHandle thread(started.hThread); // only to close it
        id_ = started.dwProcessId;
    }
    LimitedProcess(const LimitedProcess&) = delete;
    LimitedProcess& operator=(const LimitedProcess&) = delete;
    ~LimitedProcess()
    {
        TerminateProcess(process_.Get(), 1);
        WaitForSingleObject(process_.Get(), INFINITE);
    }

    [[nodiscard]] DWORD Id() const { return id_; }

private:
    system::win32::v1::UniqueKernelHandle process_;
    DWORD id_ = 0;
};

} // namespace vqrx::test
