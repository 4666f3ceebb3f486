// Supervisors that hang, and the guard's watch that ends and replaces them.
#include "CapturedProgram.h"
#include "ChildProcess.h"
#include "Daemonctl.h"
#include "FileContent.h"
#include "GuardWatchFixture.h"
#include "SupervisorCheck.h"
#include "SupervisorProcess.h"
#include "daemon_manager/SupervisorClient.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <string>

namespace vqrx::test {
namespace {

using GuardHang = GuardWatch;

TEST_F(GuardHang, Supervisor_that_does_not_answer_is_dumped_ended_and_replaced)
{
    StartWatch();
    ASSERT_TRUE(machine_.WaitForTakeOver());
    const DWORD first = GuardedMachine::WaitForSupervisor();
    ASSERT_TRUE(SuspendProcess(first));
    EXPECT_NE(
        machine_.WaitForGuardLog("Supervisor hangs and is ended: process " + std::to_string(first)),
        "");
    EXPECT_TRUE(Logged("Supervisor does not answer, 3 of 3: no answer within 1000 ms"));
    EXPECT_EQ(machine_.WaitForGuardLog("Dump of the supervisor: "),
              "Dump of the supervisor: written to " + Dump());
    ASSERT_TRUE(machine_.WaitForTakeOver(2));
    EXPECT_NE(GuardedMachine::WaitForSupervisor(), first);
    const std::string dump = ReadText(Dump());
    EXPECT_EQ(dump.substr(0, 4), "MDMP");
    EXPECT_FALSE(std::filesystem::exists(Dump() + ".new"));
}

// Its shutdown waits for a stop.
TEST_F(GuardHang, Supervisor_that_hangs_after_an_order_to_exit_is_ended_and_not_replaced)
{
    const ReadyEvent ready;
    const ReadyEvent quit;
    const ReadyEvent mayEnd;
    StartWatch();
    ASSERT_TRUE(machine_.WaitForTakeOver());
    const std::string process = "process " + std::to_string(GuardedMachine::WaitForSupervisor());
    EXPECT_EQ(Daemonctl("launch \"" + TestProgram("signals_quit") + "\" " + ready.Name() + " " +
                        quit.Name() + " " + mayEnd.Name())
                  .exitCode,
              0U);
    ASSERT_TRUE(ready.Wait());
    const CapturedProgram stopping(ProductProgram("daemonctl.exe") + " stop 0");
    ASSERT_TRUE(quit.Wait());
    EXPECT_EQ(Daemonctl("exit --no-wait").exitCode, 0U);
    EXPECT_NE(machine_.WaitForGuardLog("Supervisor hangs and is ended: " + process), "");
    EXPECT_NE(machine_.WaitForGuardLog("Supervisor has ended on an order: " + process +
                                       "; the watch ends"),
              "");
    mayEnd.Signal();
    EXPECT_TRUE(ProcessesNamed("DaemonManager.exe").empty());
}

// As after a check that was under way when the supervisor was suspended: it keeps its connection.
TEST_F(GuardHang, Connection_from_before_does_not_make_a_hanging_supervisor_look_busy)
{
    StartWatch();
    ASSERT_TRUE(machine_.WaitForTakeOver());
    const DWORD first = GuardedMachine::WaitForSupervisor();
    const daemon_manager::SupervisorClient connected; // the guard's watch is in this process, too
    ASSERT_TRUE(SuspendProcess(first));
    EXPECT_NE(
        machine_.WaitForGuardLog("Supervisor hangs and is ended: process " + std::to_string(first)),
        "");
    EXPECT_TRUE(Logged("Supervisor does not answer, 3 of 3: no answer within 1000 ms"));
}

TEST_F(GuardHang, Supervisor_that_hung_before_the_guard_began_is_ended_and_replaced)
{
    const system::com::v1::ComApartment apartment;
    const CapturedProgram supervisor('"' + ProductProgram("DaemonManager.exe") + '"');
    ASSERT_TRUE(WaitUntil([] { return guard::v0::IsPublished(); }));
    ASSERT_TRUE(SuspendProcess(supervisor.Pid()));
    StartWatch();
    EXPECT_NE(machine_.WaitForGuardLog("Supervisor hangs and is ended: process " +
                                       std::to_string(supervisor.Pid())),
              "");
    EXPECT_TRUE(Logged("Supervisor does not answer, 3 of 3: no answer within 1000 ms"));
    ASSERT_TRUE(machine_.WaitForTakeOver());
    EXPECT_NE(GuardedMachine::WaitForSupervisor(), supervisor.Pid());
}

TEST_F(GuardHang, Checks_of_a_supervisor_that_hangs_wait_on_one_thread)
{
    const system::com::v1::ComApartment apartment;
    const CapturedProgram supervisor('"' + ProductProgram("DaemonManager.exe") + '"');
    ASSERT_TRUE(WaitUntil([] { return guard::v0::IsPublished(); }));
    ASSERT_TRUE(SuspendProcess(supervisor.Pid()));
    guard::v0::SupervisorChecker checker;
    const auto check = [&] { return checker.Check(std::chrono::milliseconds(100)).result; };
    EXPECT_EQ(check(), guard::v0::CheckResult::kSilent);
    const std::size_t threads = CountOfThreads(GetCurrentProcessId());
    for (int again = 0; again < 10; ++again) {
        EXPECT_EQ(check(), guard::v0::CheckResult::kSilent);
    }
    EXPECT_LT(CountOfThreads(GetCurrentProcessId()), threads + 5); // COM may begin some of its own
}

} // namespace
} // namespace vqrx::test
