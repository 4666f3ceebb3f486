#include "AllocationFault.h"
#include "ManagerFixture.h"

#include <gtest/gtest.h>

namespace vqrx::test {
namespace {

using system::daemon::daemon_mgr::v0::kNoId;

class DaemonManagerStopTest : public ManagerFixture {};

} // namespace

TEST_F(DaemonManagerStopTest, Stop_and_Detach_of_an_unknown_id_do_nothing)
{
    Make(kNoPasses);
    EXPECT_EQ(S_FALSE, manager_->Stop(0));
    EXPECT_EQ(S_FALSE, manager_->Detach(0));
    EXPECT_EQ(S_FALSE, manager_->Stop(kNoId));
}

TEST_F(DaemonManagerStopTest, Stop_of_a_daemon_that_never_ran_succeeds_and_removes_the_daemon)
{
    Make(kNoPasses);
    DWORD daemonId = 0;
    Launch("a.exe", {}, &daemonId);
    EXPECT_EQ(S_OK, manager_->Stop(daemonId));
    EXPECT_EQ(S_FALSE, manager_->Stop(daemonId));
}

TEST_F(DaemonManagerStopTest, Stop_ends_the_process_and_no_later_pass_starts_the_program_again)
{
    const ReadyEvent ready;
    Make();
    DWORD processId = 0;
    const DWORD daemonId = LaunchAndWait("no_windows", ready, processId);
    const system::win32::v1::UniqueKernelHandle process(OpenProcess(SYNCHRONIZE, FALSE, processId));
    EXPECT_EQ(S_OK, manager_->Stop(daemonId));
    // Windows may end the process a moment after TerminateProcess has returned.
    EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(process.Get(), 60000));
    const std::string text =
        "Stop (2) " +
        Description(daemonId, processId, TestProgram("no_windows") + " " + ready.Name());
    EXPECT_TRUE(sink_.WaitForText(text));
    EXPECT_EQ(1U, sink_.Count(1, text));
    // Each pass logs one line for a missing program. After two such lines, one whole pass has
    // certainly run since the launch.
    DWORD missing = 0;
    Launch("C:\\missing.exe", {}, &missing);
    sink_.WaitForPrefix("Unable to start", 2);
    std::size_t starts = 0;
    for (const std::string& line : sink_.Texts()) {
        starts += line.starts_with("Start ") ? 1 : 0;
    }
    EXPECT_EQ(1U, starts);
}

TEST_F(DaemonManagerStopTest,
       Detach_of_a_launched_daemon_logs_nothing_and_leaves_the_daemon_supervised)
{
    const ReadyEvent ready;
    Make();
    DWORD processId = 0;
    const DWORD daemonId = LaunchAndWait("no_windows", ready, processId);
    EXPECT_EQ(S_FALSE, manager_->Detach(daemonId));
    KillProcess(processId);
    EXPECT_NE(0U, PidIn(sink_.WaitForPrefix("Start ", 2).text));
    for (const auto& record : sink_.Records()) {
        EXPECT_NE(0U, record.text.rfind("Detached", 0));
    }
}

TEST_F(DaemonManagerStopTest, Stop_that_runs_out_of_memory_leaves_the_daemon_running_and_registered)
{
    Make();
    bool happened = true;
    for (std::size_t succeeding = 0; happened; ++succeeding) {
        const ReadyEvent ready;
        DWORD processId = 0;
        const DWORD daemonId = LaunchAndWait("no_windows", ready, processId);
        HRESULT hr = S_OK;
        {
            const AllocationFault fault(succeeding);
            hr = manager_->Stop(daemonId);
            happened = fault.Happened();
        }
        if (hr == S_OK) { // the failed allocation was one of the logger
            EXPECT_FALSE(IsRunning(processId)) << succeeding;
            EXPECT_EQ(S_FALSE, manager_->Stop(daemonId)) << succeeding;
        } else {
            EXPECT_EQ(E_OUTOFMEMORY, hr) << succeeding;
            EXPECT_TRUE(IsRunning(processId)) << succeeding;
            EXPECT_EQ(S_OK, manager_->Stop(daemonId)) << succeeding;
        }
        ASSERT_GT(100U, succeeding);
    }
}

} // namespace vqrx::test
