// What keeps the guard from starting a supervisor, or from finding one that it has started.
#include "ChildProcess.h"
#include "GuardWatchFixture.h"
#include "ImportPatch.h"
#include "PublishedControl.h"
#include "TestService.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

namespace vqrx::test {
namespace {

using GuardStart = GuardWatch;

BOOL WINAPI PutOthersIntoSession7(DWORD process, DWORD* session)
{
    *session = process == GetCurrentProcessId() ? 1 : 7;
    return TRUE;
}

TEST_F(GuardStart, Supervisor_that_waits_for_the_firewall_is_waited_for_and_the_log_says_so)
{
    const ReadyEvent hold;
    TestService firewall("MpsSvc", SERVICE_WIN32_OWN_PROCESS, SERVICE_DEMAND_START, 0, hold.Name());
    firewall.Start(false);
    StartWatch();
    EXPECT_NE(machine_.WaitForGuardLog("Supervisor is not published yet after 0 s: it may wait for "
                                       "the firewall service; the guard waits on"),
              "");
    hold.Signal();
    ASSERT_TRUE(machine_.WaitForTakeOver());
}

// This host has one session.
TEST_F(GuardStart, Supervisor_of_another_session_is_named_with_its_session)
{
    const ReadyEvent hold;
    TestService firewall("MpsSvc", SERVICE_WIN32_OWN_PROCESS, SERVICE_DEMAND_START, 0, hold.Name());
    firewall.Start(false);
    const ImportPatch sessions("ProcessIdToSessionId", PutOthersIntoSession7);
    StartWatch();
    EXPECT_NE(machine_.WaitForGuardLog("Supervisor is not published yet after 0 s: it runs in "
                                       "session 7, where this guard does not find it; to let the "
                                       "guard start its own: there daemonctl exit, then here "
                                       "daemonctl autostart start; the guard waits on"),
              "");
    StopWatch();
    hold.Signal();
}

// The records of a supervisor that is refused would disturb the log of the one that is published.
TEST_F(GuardStart, No_supervisor_is_started_beside_the_object_of_another_program)
{
    const system::com::v1::ComApartment apartment;
    const PublishedControl impostor;
    StartWatch();
    EXPECT_NE(machine_.WaitForGuardLog("Supervisor not started: another object is published under "
                                       "the supervisor's name; "),
              "");
    EXPECT_NE(machine_.WaitForGuardLog("Next start of the supervisor in 0 s"), "");
    StopWatch();
    EXPECT_FALSE(std::filesystem::exists(machine_.SupervisorLog()));
}

TEST_F(GuardStart, Object_of_another_program_is_not_taken_for_that_of_a_supervisor_that_starts)
{
    const system::com::v1::ComApartment apartment;
    const ReadyEvent hold;
    TestService firewall("MpsSvc", SERVICE_WIN32_OWN_PROCESS, SERVICE_DEMAND_START, 0, hold.Name());
    firewall.Start(false);
    const CapturedProgram supervisor('"' + ProductProgram("DaemonManager.exe") + '"');
    const PublishedControl impostor;
    StartWatch();
    const std::string reason = machine_.WaitForGuardLog("Supervisor is not published yet after ");
    EXPECT_NE(reason.find("not the installed supervisor answers: "), std::string::npos) << reason;
    EXPECT_TRUE(reason.ends_with("; the guard waits on")) << reason;
    hold.Signal();
    EXPECT_NE(machine_.WaitForGuardLog("Supervisor has ended without an order: "), "");
    EXPECT_NE(machine_.WaitForGuardLog("Another object is published under the supervisor's name."),
              "");
    StopWatch();
    EXPECT_EQ(impostor.Calls(), 0);
}

} // namespace
} // namespace vqrx::test
