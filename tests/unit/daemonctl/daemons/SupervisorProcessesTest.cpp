#include "SupervisorProcesses.h"

#include "ChildProcess.h"
#include "ImportPatch.h"
#include "ProcessList.h"
#include "TempFolder.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

namespace vqrx::test {
namespace {

using client::v0::ProcessListUnreadable;
using client::v0::SupervisorProcesses;

/// Copies of programs of these tests that are named like the supervisor.
class SupervisorProcessesTest : public ::testing::Test {
protected:
    /// Copies a program and returns the path of the copy.
    std::string Copy(const std::string& program)
    {
        const std::string copy = folder_.File("DaemonManager.exe");
        std::filesystem::copy_file(program, copy);
        return copy;
    }

    const TempFolder folder_;
};

HANDLE WINAPI DenyAccess(DWORD, BOOL, DWORD)
{
    SetLastError(ERROR_ACCESS_DENIED);
    return nullptr;
}

HANDLE WINAPI RefuseSnapshot(DWORD, DWORD)
{
    SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return INVALID_HANDLE_VALUE;
}

TEST_F(SupervisorProcessesTest, A_hidden_process_counts_as_running_until_the_list_lacks_it)
{
    const ChildProcess child('"' + Copy(TestProgram("no_windows")) + '"');
    const ImportPatch deny("OpenProcess", DenyAccess);
    const SupervisorProcesses processes;
    EXPECT_EQ(processes.Running().size(), 1U);
    {
        const ImportPatch refuse("CreateToolhelp32Snapshot", RefuseSnapshot);
        EXPECT_THROW(static_cast<void>(processes.WaitUntilAtMost(0, 0)), ProcessListUnreadable);
        EXPECT_THROW(SupervisorProcesses(), ProcessListUnreadable);
    }
    EXPECT_FALSE(processes.WaitUntilAtMost(0, 0));
    child.Kill();
    ASSERT_TRUE(child.Wait());
    EXPECT_TRUE(processes.WaitUntilAtMost(0, 60000));
}

} // namespace
} // namespace vqrx::test
