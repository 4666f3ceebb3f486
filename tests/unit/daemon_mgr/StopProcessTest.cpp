#include "StopProcess.h"

#include "CapturingLogger.h"
#include "ChildProcess.h"
#include "ImportPatch.h"
#include "LaunchProcess.h"
#include "WaitNotes.h"
#include "end_process/ProcessWindows.h"

#include <gtest/gtest.h>

#include <atomic>

namespace vqrx::test {
namespace {

using system::daemon::daemon_mgr::v0::LaunchProcess;
using system::daemon::daemon_mgr::v0::ProcessInfo;
using system::daemon::daemon_mgr::v0::StopProcess;
using system::daemon::daemon_mgr::v0::StopTimings;
using system::end_process::v1::WindowsOfProcess;
using system::end_process::v1::WindowThreadsOfProcess;
using Line = CapturingLogger::Line;

class StopProcessTest : public ::testing::Test {
protected:
    // Starts a test program and waits until it is ready.
    ProcessInfo Start(const std::string& program)
    {
        const ReadyEvent ready;
        ProcessInfo daemon;
        daemon.executablePath = TestProgram(program);
        daemon.arguments = {ready.Name()};
        daemon.daemonId = 4;
        daemon.process = LaunchProcess(daemon.executablePath, daemon.arguments);
        EXPECT_TRUE(daemon.process);
        daemon.processId = GetProcessId(daemon.process.Get());
        reaper_.Note(daemon.processId);
        EXPECT_TRUE(ready.Wait());
        description_ = "DaemonId(4) PId(" + std::to_string(daemon.processId) +
                       ") : " + daemon.executablePath + " " + ready.Name() + " ";
        return daemon;
    }

    // Waits for the end of a process. @return its exit code
    static DWORD ExitCodeAfterEnd(const system::win32::v1::UniqueKernelHandle& process)
    {
        WaitForSingleObject(process.Get(), 60000);
        DWORD code = 0;
        GetExitCodeProcess(process.Get(), &code);
        return code;
    }

    // A handle to the process that stays open after StopProcess has closed its own.
    static system::win32::v1::UniqueKernelHandle Watch(const ProcessInfo& daemon)
    {
        HANDLE copy = nullptr;
        DuplicateHandle(GetCurrentProcess(), daemon.process.Get(), GetCurrentProcess(), &copy, 0,
                        FALSE, DUPLICATE_SAME_ACCESS);
        return system::win32::v1::UniqueKernelHandle(copy);
    }

    CapturingLogger logger_;
    std::string description_;
    ProcessReaper reaper_;
};

std::atomic<int> keystrokes = 0;
BOOL WINAPI CountPosts(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    keystrokes += message == WM_CHAR ? 1 : 0;
    return PostMessageW(window, message, wParam, lParam);
}

} // namespace

TEST_F(StopProcessTest, Stop_of_a_daemon_without_a_process_succeeds_and_logs_nothing)
{
    ProcessInfo daemon;
    EXPECT_EQ(0, StopProcess(logger_, daemon, {}));
    EXPECT_TRUE(logger_.Lines().empty());
}

TEST_F(StopProcessTest, Stop_of_an_attached_daemon_fails_logs_nothing_and_keeps_process_and_handle)
{
    ProcessInfo daemon = Start("no_windows");
    daemon.attached = true;
    EXPECT_EQ(1, StopProcess(logger_, daemon, {}));
    EXPECT_TRUE(logger_.Lines().empty());
    EXPECT_TRUE(daemon.process);
    EXPECT_TRUE(IsRunning(daemon.processId));
}

TEST(StopTimings, Wait_for_the_windows_is_30_s_and_the_agent_is_asked_32_times_a_second_apart)
{
    const system::end_process::v1::StopTimings timings;
    EXPECT_EQ(30000U, timings.quitWaitMs);
    EXPECT_EQ(1000U, timings.agentRoundMs);
    EXPECT_EQ(31U, timings.agentLastRound); // the first round is 0
}

TEST_F(StopProcessTest, Program_without_windows_is_terminated_at_once_with_exit_code_0)
{
    ProcessInfo daemon = Start("no_windows");
    ASSERT_TRUE(WindowsOfProcess(daemon.processId).empty()) << "the program has a window";
    const auto watch = Watch(daemon);
    {
        const WaitNotes notes;
        EXPECT_EQ(0, StopProcess(logger_, daemon, {}));
        EXPECT_TRUE(notes.Sleeps().empty());
        EXPECT_TRUE(notes.Waits().empty());
    }
    EXPECT_EQ((std::vector<Line>{{1, "Stop (2) " + description_}}), logger_.Lines());
    EXPECT_FALSE(daemon.process);
    EXPECT_EQ(0U, ExitCodeAfterEnd(watch));
}

TEST_F(StopProcessTest, Program_that_ends_on_WM_QUIT_is_stopped_with_method_1)
{
    ProcessInfo daemon = Start("quits");
    EXPECT_EQ(0, StopProcess(logger_, daemon, {}));
    EXPECT_EQ((std::vector<Line>{{1, "Stop (1) " + description_}}), logger_.Lines());
}

TEST_F(StopProcessTest, Stop_waits_for_a_program_that_needs_five_seconds_to_end)
{
    ProcessInfo daemon = Start("ends_slowly");
    const auto watch = Watch(daemon);
    EXPECT_EQ(0, StopProcess(logger_, daemon, {}));
    EXPECT_EQ((std::vector<Line>{{1, "Stop (1) " + description_}}), logger_.Lines());
    EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(watch.Get(), 0));
}

TEST_F(StopProcessTest, Thread_with_two_windows_gets_two_quit_messages)
{
    ProcessInfo daemon = Start("two_windows"); // ends on the second WM_QUIT
    const auto threads = WindowThreadsOfProcess(daemon.processId);
    EXPECT_LE(2U, threads.size()); // Wine adds the window of the input method
    EXPECT_EQ(0, StopProcess(logger_, daemon, {}));
    EXPECT_EQ((std::vector<Line>{{1, "Stop (1) " + description_}}), logger_.Lines());
}

TEST_F(StopProcessTest, Program_that_ignores_WM_QUIT_is_terminated_after_the_wait)
{
    ProcessInfo daemon = Start("ignores_quit");
    StopTimings timings;
    timings.quitWaitMs = 200;
    EXPECT_EQ(0, StopProcess(logger_, daemon, timings));
    EXPECT_EQ((std::vector<Line>{{1, "Stop (2) " + description_}}), logger_.Lines());
}

TEST_F(StopProcessTest, Stop_fails_and_closes_the_handle_if_TerminateProcess_is_refused)
{
    ProcessInfo daemon = Start("no_windows");
    HANDLE withoutTerminate = nullptr;
    DuplicateHandle(GetCurrentProcess(), daemon.process.Get(), GetCurrentProcess(),
                    &withoutTerminate, SYNCHRONIZE, FALSE, 0);
    daemon.process.Reset(withoutTerminate);
    EXPECT_EQ(1, StopProcess(logger_, daemon, {}));
    EXPECT_EQ((std::vector<Line>{{1, "Unable to stop " + description_}}), logger_.Lines());
    EXPECT_FALSE(daemon.process);
    EXPECT_TRUE(IsRunning(daemon.processId));
}

TEST_F(StopProcessTest, Failed_wait_counts_as_the_end_of_the_process)
{
    ProcessInfo daemon = Start("ignores_quit");
    HANDLE withoutWait = nullptr;
    DuplicateHandle(GetCurrentProcess(), daemon.process.Get(), GetCurrentProcess(), &withoutWait,
                    PROCESS_QUERY_INFORMATION, FALSE, 0);
    daemon.process.Reset(withoutWait);
    EXPECT_EQ(0, StopProcess(logger_, daemon, {}));
    EXPECT_EQ((std::vector<Line>{{1, "Stop (1) " + description_}}), logger_.Lines());
}

TEST_F(StopProcessTest, Agent_that_closes_its_windows_on_the_keystrokes_is_stopped_with_method_0)
{
    ProcessInfo daemon = Start("kxsnmp_agent");
    EXPECT_EQ(0, StopProcess(logger_, daemon, {}));
    EXPECT_EQ((std::vector<Line>{{1, "Stop (0) " + description_}}), logger_.Lines());
}

TEST_F(StopProcessTest,
       Stop_of_an_agent_without_windows_succeeds_at_once_and_leaves_the_process_running)
{
    ProcessInfo daemon = Start("no_windows");
    daemon.executablePath = "C:\\KXSNMP.exe";
    {
        const WaitNotes notes;
        EXPECT_EQ(0, StopProcess(logger_, daemon, {}));
        EXPECT_TRUE(notes.Sleeps().empty());
        EXPECT_TRUE(notes.Waits().empty());
    }
    ASSERT_EQ(1U, logger_.Lines().size());
    EXPECT_EQ(0U, logger_.Lines()[0].second.find("Stop (0) DaemonId(4)"));
    EXPECT_TRUE(IsRunning(daemon.processId));
}

TEST_F(StopProcessTest, Agent_that_ignores_the_keystrokes_gets_32_rounds_and_then_WM_QUIT)
{
    ProcessInfo daemon = Start("kxsnmp_deaf"); // ends on WM_QUIT
    StopTimings timings;
    timings.agentRoundMs = 1;
    const std::size_t windows = WindowsOfProcess(daemon.processId).size();
    keystrokes = 0;
    {
        const ImportPatch patch("PostMessageA", CountPosts);
        EXPECT_EQ(0, StopProcess(logger_, daemon, timings));
    }
    EXPECT_EQ((std::vector<Line>{{1, "Stop (1) " + description_}}), logger_.Lines());
    // One request before the rounds and one in each round; two keystrokes per window and request.
    EXPECT_EQ(33 * 2 * static_cast<int>(windows), keystrokes);
}

TEST_F(StopProcessTest, Agent_whose_windows_close_in_the_last_round_gets_the_general_steps)
{
    // The agent closes its windows after the first request. The first round is the last one here,
    // so the general steps follow: no window gets WM_QUIT, and the process is terminated unless it
    // has ended by then.
    ProcessInfo daemon = Start("kxsnmp_agent");
    StopTimings timings;
    timings.agentLastRound = 0;
    timings.agentRoundMs = 1000;
    const auto watch = Watch(daemon);
    static_cast<void>(StopProcess(logger_, daemon, timings));
    ASSERT_EQ(1U, logger_.Lines().size());
    EXPECT_EQ(std::string::npos, logger_.Lines()[0].second.find("Stop (0)"));
    EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(watch.Get(), 60000));
}

} // namespace vqrx::test
