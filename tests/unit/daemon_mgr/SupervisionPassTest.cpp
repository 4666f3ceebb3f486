#include "SupervisionPass.h"

#include "CapturingLogger.h"
#include "ChildProcess.h"
#include "ImportPatch.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>

namespace vqrx::test {
namespace {

using system::daemon::daemon_mgr::v0::DaemonTable;
using system::daemon::daemon_mgr::v0::ProcessInfo;
using system::daemon::daemon_mgr::v0::SupervisionPass;
using system::win32::v1::UniqueKernelHandle;
using Line = CapturingLogger::Line;

class Pass : public ::testing::Test {
protected:
    ProcessInfo& Add(DWORD id, const std::string& path, const std::vector<std::string>& arguments)
    {
        ProcessInfo record;
        record.executablePath = path;
        record.arguments = arguments;
        record.processId = 0;
        record.daemonId = id;
        return table_.emplace(id, std::move(record)).first->second;
    }

    void Run()
    {
        SupervisionPass(table_, logger_);
        for (auto& [id, record] : table_) {
            if (record.process) {
                reaper_.Note(record.processId);
            }
        }
    }

    static void WaitForEnd(const ProcessInfo& record)
    {
        ASSERT_EQ(WAIT_OBJECT_0, WaitForSingleObject(record.process.Get(), 60000));
    }

    CapturingLogger logger_;
    ProcessReaper reaper_;
    DaemonTable table_;
};

std::string Started(const ProcessInfo& record, const std::string& command)
{
    return "Start DaemonId(" + std::to_string(record.daemonId) + ") PId(" +
           std::to_string(record.processId) + ") : " + command + " ";
}

} // namespace

TEST_F(Pass, over_an_empty_table_does_nothing)
{
    Run();
    EXPECT_TRUE(logger_.Lines().empty());
}

TEST_F(Pass, starts_a_record_without_a_process_at_level_2_the_first_time)
{
    ProcessInfo& record = Add(3, TestProgram("no_windows"), {});
    Run();
    EXPECT_EQ((std::vector<Line>{{2, Started(record, record.executablePath)}}), logger_.Lines());
    EXPECT_TRUE(IsRunning(record.processId));
    EXPECT_EQ(record.processId, GetProcessId(record.process.Get()));
    EXPECT_EQ(1U, record.restarts);
}

TEST_F(Pass, leaves_a_live_process_alone)
{
    ProcessInfo& record = Add(0, TestProgram("no_windows"), {});
    Run();
    const DWORD processId = record.processId;
    Run();
    EXPECT_EQ(processId, record.processId);
    EXPECT_EQ(1U, record.restarts);
    EXPECT_EQ(1U, logger_.Lines().size());
}

TEST_F(Pass, reports_an_exit_with_code_0_and_starts_the_program_again_at_level_1)
{
    ProcessInfo& record = Add(0, TestProgram("exits_with"), {"0"});
    Run();
    WaitForEnd(record);
    Run();
    const auto lines = logger_.Lines();
    ASSERT_EQ(3U, lines.size());
    EXPECT_EQ((Line{0, "Exception caught in : Unknown (0x0)"}), lines[1]);
    EXPECT_EQ((Line{1, Started(record, record.executablePath + " 0")}), lines[2]);
    EXPECT_EQ(2U, record.restarts);
}

TEST_F(Pass, counts_the_first_start_of_an_attached_program_that_exited_with_code_0_as_1)
{
    ProcessInfo& record = Add(0, TestProgram("exits_with"), {"0"});
    Run();
    WaitForEnd(record);
    record.attached = true; // as if it had been running when it was attached
    record.restarts = 0;
    Run();
    const auto lines = logger_.Lines();
    ASSERT_EQ(3U, lines.size());
    EXPECT_EQ((Line{0, "Exception caught in : Unknown (0x0)"}), lines[1]);
    EXPECT_EQ((Line{1, Started(record, record.executablePath + " 0")}), lines[2]);
    EXPECT_EQ(1U, record.restarts);
}

TEST_F(Pass, names_the_exception_of_a_program_that_crashed)
{
    ProcessInfo& record = Add(0, TestProgram("crashes"), {});
    Run();
    WaitForEnd(record);
    Run();
    EXPECT_EQ((Line{0, "Exception caught in : Access violation"}), logger_.Lines().at(1));
}

TEST_F(Pass, names_the_service_whose_process_ended)
{
    ProcessInfo& record = Add(0, TestProgram("exits_with"), {"3221225477"}); // 0xC0000005
    Run();
    WaitForEnd(record);
    record.serviceName = "Svc";
    Run();
    EXPECT_EQ((Line{0, "Exception caught in Svc: Access violation"}), logger_.Lines().at(1));
}

TEST_F(Pass, takes_a_process_that_ended_with_code_259_for_a_live_one)
{
    ProcessInfo& record = Add(0, TestProgram("exits_with"), {"259"});
    Run();
    WaitForEnd(record);
    Run();
    EXPECT_EQ(1U, logger_.Lines().size());
    EXPECT_EQ(1U, record.restarts);
}

TEST_F(Pass, takes_a_process_whose_exit_code_cannot_be_read_for_an_ended_one)
{
    ProcessInfo& record = Add(0, TestProgram("no_windows"), {});
    Run();
    HANDLE weak = nullptr;
    DuplicateHandle(GetCurrentProcess(), record.process.Get(), GetCurrentProcess(), &weak,
                    SYNCHRONIZE, FALSE, 0);
    record.process.Reset(weak);
    const DWORD first = record.processId;
    Run();
    EXPECT_EQ((Line{0, "Exception caught in : Unknown (0xffffffff)"}), logger_.Lines().at(1));
    EXPECT_NE(first, record.processId);
}

TEST_F(Pass, keeps_the_handle_of_an_ended_process_open)
{
    ProcessInfo& record = Add(0, TestProgram("exits_with"), {"0"});
    Run();
    const HANDLE first = record.process.Get();
    WaitForEnd(record);
    Run();
    EXPECT_NE(first, record.process.Get());
    EXPECT_EQ(WAIT_OBJECT_0,
              WaitForSingleObject(first, 0)); // still a process handle, of an ended one
    CloseHandle(first);
}

TEST_F(Pass, says_at_every_pass_that_a_missing_program_cannot_be_started_and_counts)
{
    const ProcessInfo& record = Add(0, "C:\\missing.exe", {"-x"});
    Run();
    Run();
    const Line expected{1, "Unable to start C:\\missing.exe -x "};
    EXPECT_EQ((std::vector<Line>{expected, expected}), logger_.Lines());
    EXPECT_EQ(2U, record.restarts);
    EXPECT_FALSE(record.process);
}

TEST_F(Pass, shows_the_old_process_id_when_a_program_cannot_be_started_again)
{
    ProcessInfo& record = Add(5, TestProgram("exits_with"), {});
    Run();
    WaitForEnd(record);
    const DWORD processId = record.processId;
    record.executablePath = "C:\\missing.exe";
    Run();
    EXPECT_EQ((Line{1, "Unable to start DaemonId(5) PId(" + std::to_string(processId) +
                           ") : C:\\missing.exe "}),
              logger_.Lines().at(2));
    EXPECT_FALSE(record.process);
}

TEST_F(Pass, starts_an_attached_record_at_level_1_also_the_first_time)
{
    ProcessInfo& record = Add(0, TestProgram("no_windows"), {});
    record.attached = true;
    Run();
    EXPECT_EQ((std::vector<Line>{{1, Started(record, record.executablePath)}}), logger_.Lines());
}

TEST_F(Pass, starts_a_record_that_could_not_be_started_at_first_at_level_1)
{
    ProcessInfo& record = Add(0, "C:\\missing.exe", {});
    Run();
    record.executablePath = TestProgram("no_windows");
    Run();
    EXPECT_EQ((Line{1, Started(record, record.executablePath)}), logger_.Lines().at(1));
}

TEST_F(Pass, visits_the_records_in_the_order_of_their_ids)
{
    Add(9, "C:\\nine.exe", {});
    Add(1, "C:\\one.exe", {});
    Add(5, "C:\\five.exe", {});
    Run();
    const auto lines = logger_.Lines();
    ASSERT_EQ(3U, lines.size());
    EXPECT_EQ("Unable to start C:\\one.exe ", lines[0].second);
    EXPECT_EQ("Unable to start C:\\five.exe ", lines[1].second);
    EXPECT_EQ("Unable to start C:\\nine.exe ", lines[2].second);
}

namespace {

std::atomic<int> creations = 0;
BOOL WINAPI CountCreation(LPCSTR, LPSTR, LPSECURITY_ATTRIBUTES, LPSECURITY_ATTRIBUTES, BOOL, DWORD,
                          LPVOID, LPCSTR, LPSTARTUPINFOA, LPPROCESS_INFORMATION)
{
    ++creations;
    return FALSE;
}

} // namespace

TEST_F(Pass, over_ten_thousand_records_tries_each_of_them_once)
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

namespace {

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

/// Many records that share few processes, each with a handle of its own.
class PassOverMany : public Pass {
protected:
    PassOverMany()
        : exitCode_("GetExitCodeProcess", &CountExitCode)
        , wait_("WaitForMultipleObjects", &CountWait)
    {
        realReadExitCode = exitCode_.Original<ReadExitCode>();
        realWaitMany = wait_.Original<WaitMany>();
    }

    void Share(DWORD id, HANDLE process, DWORD access)
    {
        HANDLE duplicate = nullptr;
        DuplicateHandle(GetCurrentProcess(), process, GetCurrentProcess(), &duplicate, access,
                        FALSE, 0);
        ProcessInfo& record = Add(id, "C:\\missing.exe", {std::to_string(id)});
        record.process.Reset(duplicate);
        record.processId = GetProcessId(process);
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
        SupervisionPass(table_, logger_);
    }

    static constexpr DWORD kAll = PROCESS_ALL_ACCESS;
    ChildProcess first_{TestProgram("no_windows")};
    ChildProcess second_{TestProgram("no_windows")};

private:
    ImportPatch exitCode_;
    ImportPatch wait_;
};

} // namespace

TEST_F(PassOverMany, asks_64_of_them_at_once_and_reads_the_exit_code_of_each_handle_once)
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

TEST_F(PassOverMany, finds_every_process_that_has_ended_wherever_it_stands)
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

TEST_F(PassOverMany, keeps_the_order_between_those_that_run_and_those_that_have_no_process)
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

TEST_F(PassOverMany, reads_the_exit_codes_of_all_where_one_handle_cannot_be_waited_for)
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

TEST_F(PassOverMany, takes_those_that_ended_with_code_259_for_live_ones_at_every_pass)
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
