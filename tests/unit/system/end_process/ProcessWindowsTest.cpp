#include "end_process/ProcessWindows.h"

#include "AllocationFault.h"
#include "ChildProcess.h"

#include <gtest/gtest.h>

#include <new>
#include <set>
#include <vector>

namespace vqrx::test {
namespace {

using system::end_process::v1::WindowsOfProcess;
using system::end_process::v1::WindowThreadsOfProcess;

class ProcessWindowsTest : public ::testing::Test {
protected:
    ProcessWindowsTest() { EXPECT_TRUE(ready_.Wait()); }

    ReadyEvent ready_;
    const ChildProcess child_{"\"" + TestProgram("two_windows") + "\" " + ready_.Name()};
};

} // namespace

TEST_F(ProcessWindowsTest, Windows_and_threads_are_those_of_the_process_one_thread_id_per_window)
{
    const std::vector<HWND> windows = WindowsOfProcess(child_.Pid());
    EXPECT_LE(2U, windows.size()); // Wine adds the window of the input method
    std::vector<DWORD> threads;
    for (const HWND window : windows) {
        DWORD processId = 0;
        threads.push_back(GetWindowThreadProcessId(window, &processId));
        EXPECT_EQ(child_.Pid(), processId);
    }
    EXPECT_EQ(threads, WindowThreadsOfProcess(child_.Pid()));
    EXPECT_EQ(1U, std::set<DWORD>(threads.begin(), threads.end()).size());
}

TEST_F(ProcessWindowsTest, Unknown_process_has_no_windows)
{
    EXPECT_TRUE(WindowsOfProcess(0xFFFFFFF0U).empty());
    EXPECT_TRUE(WindowThreadsOfProcess(0xFFFFFFF0U).empty());
}

// A list without some of the windows would make a program look like one without windows.
TEST_F(ProcessWindowsTest, Search_that_runs_out_of_memory_throws_and_gives_no_shorter_list)
{
    const auto threads = WindowThreadsOfProcess(child_.Pid());
    bool happened = true;
    for (std::size_t succeeding = 0; happened; ++succeeding) {
        std::vector<DWORD> found;
        bool raised = false;
        {
            const AllocationFault fault(succeeding);
            try {
                found = WindowThreadsOfProcess(child_.Pid());
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
