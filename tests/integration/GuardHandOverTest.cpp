// What the guard hands over, and when.
#include "ChildProcess.h"
#include "Daemonctl.h"
#include "GuardWatchFixture.h"
#include "SupervisorElsewhere.h"
#include "SupervisorProcess.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <string>

namespace vqrx::test {
namespace {

using GuardHandOver = GuardWatch;

TEST_F(GuardHandOver, Daemons_of_a_supervisor_of_another_folder_are_handed_over_only_after_its_end)
{
    StartWatch();
    ASSERT_TRUE(machine_.WaitForTakeOver());
    const DWORD supervisor = GuardedMachine::WaitForSupervisor();
    SupervisorElsewhere elsewhere;
    EXPECT_EQ(Daemonctl("attach " + std::to_string(elsewhere.Child())).exitCode, 0U);
    EXPECT_EQ(Daemonctl("wait 0").exitCode, 0U);
    KillProcess(supervisor);
    EXPECT_NE(machine_.WaitForGuardLog("Hand-over: waits until the former supervisor has ended"),
              "");
    EXPECT_FALSE(Logged("Hand-over: 1 attached, 0 already, 0 not"));
    elsewhere.Kill();
    EXPECT_NE(machine_.WaitForGuardLog("Hand-over: 1 attached, 0 already, 0 not"), "");
}

} // namespace
} // namespace vqrx::test
