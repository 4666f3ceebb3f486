// Passes over tables with many daemons.
#include "ImportPatch.h"
#include "SupervisionPassFixture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>

namespace vqrx::test {
namespace {

std::atomic<int> creations = 0;
BOOL WINAPI CountCreation(LPCSTR, LPSTR, LPSECURITY_ATTRIBUTES, LPSECURITY_ATTRIBUTES, BOOL, DWORD,
                          LPVOID, LPCSTR, LPSTARTUPINFOA, LPPROCESS_INFORMATION)
{
    ++creations;
    return FALSE;
}

using ReadExitCode = BOOL WINAPI(HANDLE, DWORD*);
ReadExitCode* realReadExitCode = nullptr;
std::atomic<int> exitCodesRead = 0;
BOOL WINAPI CountExitCode(HANDLE process, DWORD* code)
{
    ++exitCodesRead;
    return realReadExitCode(process, code);
}

using WaitMany = DWORD WINAPI(DWORD, const HANDLE*, BOOL, DWORD);
WaitMany* realWaitMany = nullptr;
std::atomic<int> waits = 0;
DWORD WINAPI CountWait(DWORD count, const HANDLE* handles, BOOL all, DWORD timeout)
{
    ++waits;
    return realWaitMany(count, handles, all, timeout);
}

/// Many daemons share two processes. Each daemon has its own handle to one of them.
class SupervisionPassManyTest : public SupervisionPassFixture {
protected:
    void Share(DWORD id, HANDLE process, DWORD access)
    {
        HANDLE duplicate = nullptr;
        DuplicateHandle(GetCurrentProcess(), process, GetCurrentProcess(), &duplicate, access,
                        FALSE, 0);
        ProcessInfo& daemon = Add(id, "C:\\missing.exe", {std::to_string(id)});
        daemon.process.Reset(duplicate);
        daemon.processId = GetProcessId(process);
    }

    std::string Unable(DWORD id, const ChildProcess& process) const
    {
        return "Unable to start DaemonId(" + std::to_string(id) + ") PId(" +
               std::to_string(process.Pid()) + ") : C:\\missing.exe " + std::to_string(id) + " ";
    }

    void RunCounted()
    {
        exitCodesRead = 0;
        waits = 0;
        system::daemon::daemon_mgr::v0::SupervisionPass(table_, logger_);
    }

    static constexpr DWORD kAll = PROCESS_ALL_ACCESS;
    ChildProcess first_{TestProgram("no_windows")};
    ChildProcess second_{TestProgram("no_windows")};

private:
    ImportPatch exitCode_{"GetExitCodeProcess", &CountExitCode, realReadExitCode};
    ImportPatch wait_{"WaitForMultipleObjects", &CountWait, realWaitMany};
};

} // namespace

TEST_F(SupervisionPassManyTest, Pass_over_ten_thousand_daemons_tries_to_start_each_of_them_once)
{
    for (DWORD id = 0; id < 10000; ++id) {
        Add(id, "C:\\missing.exe", {std::to_string(id)});
    }
    creations = 0;
    const ImportPatch patch("CreateProcessA", CountCreation);
    Run();
    EXPECT_EQ(10000, creations);
    EXPECT_EQ(10000U, logger_.Lines().size());
}

TEST_F(SupervisionPassManyTest,
       Up_to_64_running_processes_are_asked_with_one_call_and_each_exit_code_is_read_once)
{
    for (DWORD id = 0; id < 200; ++id) {
        Share(id, first_.Handle(), kAll);
    }
    RunCounted();
    EXPECT_EQ(200, exitCodesRead);
    RunCounted();
    EXPECT_EQ(0, exitCodesRead);
    EXPECT_EQ(4, waits); // 64 + 64 + 64 + 8
    EXPECT_TRUE(logger_.Lines().empty());
}

TEST_F(SupervisionPassManyTest, Every_ended_process_is_found_at_any_place_in_the_table)
{
    const std::vector<DWORD> ending{0, 1, 63, 64, 100, 127, 128, 199};
    for (DWORD id = 0; id < 200; ++id) {
        const bool ends = std::find(ending.begin(), ending.end(), id) != ending.end();
        Share(id, (ends ? second_ : first_).Handle(), kAll);
    }
    RunCounted();
    second_.Kill();
    ASSERT_TRUE(second_.Wait());
    RunCounted();
    EXPECT_EQ(8, exitCodesRead);
    std::vector<Line> expected;
    for (const DWORD id : ending) {
        expected.emplace_back(0, "Exception caught in : Unknown (0x9)");
        expected.emplace_back(1, Unable(id, second_));
    }
    EXPECT_EQ(expected, logger_.Lines());
}

TEST_F(SupervisionPassManyTest, Daemons_are_checked_in_id_order_if_only_some_of_them_have_a_process)
{
    Share(0, first_.Handle(), kAll);
    Add(1, "C:\\missing.exe", {"1"});
    Share(2, second_.Handle(), kAll);
    Share(3, first_.Handle(), kAll);
    Add(4, "C:\\missing.exe", {"4"});
    RunCounted();
    second_.Kill();
    ASSERT_TRUE(second_.Wait());
    RunCounted();
    const Line one{1, "Unable to start C:\\missing.exe 1 "};
    const Line four{1, "Unable to start C:\\missing.exe 4 "};
    EXPECT_EQ((std::vector<Line>{one,
                                 four,
                                 one,
                                 {0, "Exception caught in : Unknown (0x9)"},
                                 {1, Unable(2, second_)},
                                 four}),
              logger_.Lines());
}

TEST_F(SupervisionPassManyTest,
       All_exit_codes_of_a_group_are_read_if_one_handle_cannot_be_waited_for)
{
    for (DWORD id = 0; id < 10; ++id) {
        Share(id, (id == 7 ? second_ : first_).Handle(),
              id == 3 ? PROCESS_QUERY_INFORMATION : kAll);
    }
    RunCounted();
    RunCounted();
    EXPECT_EQ(10, exitCodesRead);
    EXPECT_TRUE(logger_.Lines().empty());
    second_.Kill();
    ASSERT_TRUE(second_.Wait());
    RunCounted();
    EXPECT_EQ(
        (std::vector<Line>{{0, "Exception caught in : Unknown (0x9)"}, {1, Unable(7, second_)}}),
        logger_.Lines());
}

TEST_F(SupervisionPassManyTest,
       Process_that_ended_with_exit_code_259_counts_as_running_in_every_pass)
{
    const ChildProcess ended(TestProgram("exits_with") + " 259");
    ASSERT_TRUE(ended.Wait());
    for (DWORD id = 0; id < 10; ++id) {
        Share(id, (id == 5 ? ended : first_).Handle(), kAll);
    }
    RunCounted();
    RunCounted();
    EXPECT_EQ(1, exitCodesRead);
    EXPECT_EQ(2, waits);
    RunCounted();
    EXPECT_TRUE(logger_.Lines().empty());
}

} // namespace vqrx::test
