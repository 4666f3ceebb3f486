// What the guard hands over, and when.
#include "ChildProcess.h"
#include "Daemonctl.h"
#include "GuardWatchFixture.h"
#include "SupervisorProcess.h"
#include "TempFolder.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

namespace vqrx::test {
namespace {

using GuardHandOver = GuardWatch;

// A copy of a child program has the name of the supervisor's program, and starts what the log
// names.
TEST_F(GuardHandOver, Daemons_of_a_supervisor_of_another_folder_are_handed_over_only_after_its_end)
{
    StartWatch();
    ASSERT_TRUE(machine_.WaitForTakeOver());
    const DWORD supervisor = GuardedMachine::WaitForSupervisor();
    const TempFolder folder;
    std::filesystem::copy_file(TestProgram("forwards"), folder.File("DaemonManager.exe"));
    std::filesystem::copy_file(TestProgram("no_windows"), folder.File("real.exe"));
    ChildProcess elsewhere('"' + folder.File("DaemonManager.exe") + '"');
    ASSERT_TRUE(WaitUntil([] { return ProcessesNamed("real.exe").size() == 1; }));
    const DWORD daemon = ProcessesNamed("real.exe").front().processId;
    EXPECT_EQ(Daemonctl("attach " + std::to_string(daemon)).exitCode, 0U);
    EXPECT_EQ(Daemonctl("wait 0").exitCode, 0U);
    KillProcess(supervisor);
    EXPECT_NE(machine_.WaitForGuardLog("Hand-over: waits until the former supervisor has ended"),
              "");
    EXPECT_FALSE(Logged("Hand-over: 1 attached, 0 already, 0 not"));
    elsewhere.Kill();
    EXPECT_NE(machine_.WaitForGuardLog("Hand-over: 1 attached, 0 already, 0 not"), "");
    KillProcess(daemon);
}

} // namespace
} // namespace vqrx::test
