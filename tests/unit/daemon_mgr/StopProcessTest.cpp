#include "StopProcess.h"

#include "AllocationFault.h"
#include "CapturingLogger.h"
#include "ChildProcess.h"
#include "ImportPatch.h"
#include "LaunchProcess.h"
#include "ProcessWindows.h"

#include <gtest/gtest.h>

#include <atomic>
#include <new>

namespace vqrx::test {
namespace {

using system::daemon::daemon_mgr::v0::LaunchProcess;
using system::daemon::daemon_mgr::v0::ProcessInfo;
using system::daemon::daemon_mgr::v0::StopProcess;
using system::daemon::daemon_mgr::v0::StopTimings;
using system::daemon::daemon_mgr::v0::WindowsOfProcess;
using system::daemon::daemon_mgr::v0::WindowThreadsOfProcess;
using Line = CapturingLogger::Line;

class Stop : public ::testing::Test {
protected:
    // Starts a program and waits until it is in the state that its name promises.
    ProcessInfo Start(const std::string& program)
    {
        const ReadyEvent ready;
        ProcessInfo record;
        record.executablePath = TestProgram(program);
        record.arguments = {ready.Name()};
        record.daemonId = 4;
        record.process = LaunchProcess(record.executablePath, record.arguments);
        EXPECT_TRUE(record.process);
        record.processId = GetProcessId(record.process.Get());
        reaper_.Note(record.processId);
        EXPECT_TRUE(ready.Wait());
        description_ = "DaemonId(4) PId(" + std::to_string(record.processId) +
                       ") : " + record.executablePath + " " + ready.Name() + " ";
        return record;
    }

    static DWORD ExitCodeAfterEnd(DWORD processId, const system::win32::v1::UniqueKernelHandle& own)
    {
        static_cast<void>(processId);
        WaitForSingleObject(own.Get(), 60000);
        DWORD code = 0;
        GetExitCodeProcess(own.Get(), &code);
        return code;
    }

    static system::win32::v1::UniqueKernelHandle Watch(const ProcessInfo& record)
    {
        HANDLE copy = nullptr;
        DuplicateHandle(GetCurrentProcess(), record.process.Get(), GetCurrentProcess(), &copy, 0,
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

TEST_F(Stop, of_a_record_without_a_process_succeeds_and_logs_nothing)
{
    ProcessInfo record;
    EXPECT_EQ(0, StopProcess(logger_, record, {}));
    EXPECT_TRUE(logger_.Lines().empty());
}

TEST_F(Stop, of_an_attached_record_fails_logs_nothing_and_leaves_process_and_handle)
{
    ProcessInfo record = Start("no_windows");
    record.attached = true;
    EXPECT_EQ(1, StopProcess(logger_, record, {}));
    EXPECT_TRUE(logger_.Lines().empty());
    EXPECT_TRUE(record.process);
    EXPECT_TRUE(IsRunning(record.processId));
}

TEST_F(Stop, of_a_program_without_windows_terminates_it_at_once_with_exit_code_0)
{
    ProcessInfo record = Start("no_windows");
    if (!WindowsOfProcess(record.processId)
             .empty()) { // a console host may own one on other systems
        FAIL() << "the program has a window";
    }
    const auto watch = Watch(record);
    EXPECT_EQ(0, StopProcess(logger_, record, {}));
    EXPECT_EQ((std::vector<Line>{{1, "Stop (2) " + description_}}), logger_.Lines());
    EXPECT_FALSE(record.process);
    EXPECT_EQ(0U, ExitCodeAfterEnd(record.processId, watch));
}

TEST_F(Stop, of_a_windowed_program_that_quits_when_asked_uses_method_1)
{
    ProcessInfo record = Start("quits");
    EXPECT_EQ(0, StopProcess(logger_, record, {}));
    EXPECT_EQ((std::vector<Line>{{1, "Stop (1) " + description_}}), logger_.Lines());
}

TEST_F(Stop, waits_for_a_program_that_needs_five_seconds)
{
    ProcessInfo record = Start("ends_slowly");
    const auto watch = Watch(record);
    EXPECT_EQ(0, StopProcess(logger_, record, {}));
    EXPECT_EQ((std::vector<Line>{{1, "Stop (1) " + description_}}), logger_.Lines());
    EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(watch.Get(), 0));
}

TEST_F(Stop, asks_a_thread_once_for_each_of_its_windows)
{
    ProcessInfo record = Start("two_windows"); // which ends on the second request
    const auto threads = WindowThreadsOfProcess(record.processId);
    EXPECT_LE(2U, threads.size()); // Wine adds the window of the input method
    EXPECT_EQ(0, StopProcess(logger_, record, {}));
    EXPECT_EQ((std::vector<Line>{{1, "Stop (1) " + description_}}), logger_.Lines());
}

TEST_F(Stop, terminates_a_program_that_does_not_quit_in_time)
{
    ProcessInfo record = Start("ignores_quit");
    StopTimings timings;
    timings.quitWaitMs = 200;
    EXPECT_EQ(0, StopProcess(logger_, record, timings));
    EXPECT_EQ((std::vector<Line>{{1, "Stop (2) " + description_}}), logger_.Lines());
}

TEST_F(Stop, that_cannot_terminate_fails_and_closes_the_handle_all_the_same)
{
    ProcessInfo record = Start("no_windows");
    HANDLE weak = nullptr;
    DuplicateHandle(GetCurrentProcess(), record.process.Get(), GetCurrentProcess(), &weak,
                    SYNCHRONIZE, FALSE, 0);
    record.process.Reset(weak);
    EXPECT_EQ(1, StopProcess(logger_, record, {}));
    EXPECT_EQ((std::vector<Line>{{1, "Unable to stop " + description_}}), logger_.Lines());
    EXPECT_FALSE(record.process);
    EXPECT_TRUE(IsRunning(record.processId));
}

TEST_F(Stop, counts_a_failed_wait_as_ended)
{
    ProcessInfo record = Start("ignores_quit");
    HANDLE weak = nullptr;
    DuplicateHandle(GetCurrentProcess(), record.process.Get(), GetCurrentProcess(), &weak,
                    PROCESS_QUERY_INFORMATION, FALSE, 0);
    record.process.Reset(weak);
    EXPECT_EQ(0, StopProcess(logger_, record, {}));
    EXPECT_EQ((std::vector<Line>{{1, "Stop (1) " + description_}}), logger_.Lines());
}

TEST_F(Stop, of_the_snmp_agent_is_done_when_its_windows_close_on_the_keystrokes)
{
    ProcessInfo record = Start("kxsnmp_agent");
    EXPECT_EQ(0, StopProcess(logger_, record, {}));
    EXPECT_EQ((std::vector<Line>{{1, "Stop (0) " + description_}}), logger_.Lines());
}

TEST_F(Stop, of_an_snmp_agent_without_windows_succeeds_at_once_and_leaves_it_running)
{
    ProcessInfo record = Start("no_windows");
    record.executablePath = "C:\\KXSNMP.exe";
    EXPECT_EQ(0, StopProcess(logger_, record, {}));
    ASSERT_EQ(1U, logger_.Lines().size());
    EXPECT_EQ(0U, logger_.Lines()[0].second.find("Stop (0) DaemonId(4)"));
    EXPECT_TRUE(IsRunning(record.processId));
}

TEST_F(Stop, asks_a_deaf_snmp_agent_in_32_rounds_and_then_goes_on_as_with_any_program)
{
    ProcessInfo record = Start("kxsnmp_deaf"); // ends on WM_QUIT
    StopTimings timings;
    timings.agentRoundMs = 1;
    const std::size_t windows = WindowsOfProcess(record.processId).size();
    keystrokes = 0;
    {
        const ImportPatch patch("PostMessageA", CountPosts);
        EXPECT_EQ(0, StopProcess(logger_, record, timings));
    }
    EXPECT_EQ((std::vector<Line>{{1, "Stop (1) " + description_}}), logger_.Lines());
    // Once before the rounds and once in each; two keystrokes for every window.
    EXPECT_EQ(33 * 2 * static_cast<int>(windows), keystrokes);
}

TEST_F(Stop, goes_on_to_the_general_steps_when_the_agents_windows_go_in_the_last_round)
{
    // The agent's windows are gone after its first request; with no round before the last, it is
    // asked as any other program, has no window to ask, and is terminated or has ended.
    ProcessInfo record = Start("kxsnmp_agent");
    StopTimings timings;
    timings.agentLastRound = 0;
    timings.agentRoundMs = 1000;
    const auto watch = Watch(record);
    static_cast<void>(StopProcess(logger_, record, timings));
    ASSERT_EQ(1U, logger_.Lines().size());
    EXPECT_EQ(std::string::npos, logger_.Lines()[0].second.find("Stop (0)"));
    EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(watch.Get(), 60000));
}

// A list without a window that is there would have a program taken for one without windows.
TEST_F(Stop, looks_for_windows_in_vain_rather_than_for_too_few_when_memory_runs_out)
{
    const ProcessInfo record = Start("two_windows");
    const auto threads = WindowThreadsOfProcess(record.processId);
    bool happened = true;
    for (std::size_t succeeding = 0; happened; ++succeeding) {
        std::vector<DWORD> found;
        bool raised = false;
        {
            const AllocationFault fault(succeeding);
            try {
                found = WindowThreadsOfProcess(record.processId);
            } catch (const std::bad_alloc&) {
                raised = true;
            }
            happened = fault.Happened();
        }
        EXPECT_EQ(happened, raised) << succeeding;
        EXPECT_EQ(raised ? std::vector<DWORD>() : threads, found) << succeeding;
        ASSERT_GT(100U, succeeding);
    }
}

} // namespace vqrx::test
