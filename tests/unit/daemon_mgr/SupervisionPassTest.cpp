#include "SupervisionPass.h"

#include "SupervisionPassFixture.h"

#include <gtest/gtest.h>

namespace vqrx::test {
namespace {

class SupervisionPassTest : public SupervisionPassFixture {
protected:
    static std::string Started(const ProcessInfo& daemon, const std::string& command)
    {
        return "Start DaemonId(" + std::to_string(daemon.daemonId) + ") PId(" +
               std::to_string(daemon.processId) + ") : " + command + " ";
    }
};

} // namespace

TEST_F(SupervisionPassTest, Pass_over_an_empty_table_does_nothing)
{
    Run();
    EXPECT_TRUE(logger_.Lines().empty());
}

TEST_F(SupervisionPassTest, First_start_of_a_daemon_is_logged_at_level_2)
{
    ProcessInfo& daemon = Add(3, TestProgram("no_windows"), {});
    Run();
    EXPECT_EQ((std::vector<Line>{{2, Started(daemon, daemon.executablePath)}}), logger_.Lines());
    EXPECT_TRUE(IsRunning(daemon.processId));
    EXPECT_EQ(daemon.processId, GetProcessId(daemon.process.Get()));
    EXPECT_EQ(1U, daemon.restarts);
}

TEST_F(SupervisionPassTest, Running_process_is_left_alone)
{
    ProcessInfo& daemon = Add(0, TestProgram("no_windows"), {});
    Run();
    const DWORD processId = daemon.processId;
    Run();
    EXPECT_EQ(processId, daemon.processId);
    EXPECT_EQ(1U, daemon.restarts);
    EXPECT_EQ(1U, logger_.Lines().size());
}

TEST_F(SupervisionPassTest, Exit_with_code_0_is_logged_and_the_restart_is_logged_at_level_1)
{
    ProcessInfo& daemon = Add(0, TestProgram("exits_with"), {"0"});
    Run();
    WaitForEnd(daemon);
    Run();
    const auto lines = logger_.Lines();
    ASSERT_EQ(3U, lines.size());
    EXPECT_EQ((Line{0, "Exception caught in : Unknown (0x0)"}), lines[1]);
    EXPECT_EQ((Line{1, Started(daemon, daemon.executablePath + " 0")}), lines[2]);
    EXPECT_EQ(2U, daemon.restarts);
}

TEST_F(SupervisionPassTest, First_restart_of_an_attached_daemon_is_counted_as_1)
{
    ProcessInfo& daemon = Add(0, TestProgram("exits_with"), {"0"});
    Run();
    WaitForEnd(daemon);
    daemon.attached = true; // as if the process had been running before the attach
    daemon.restarts = 0;
    Run();
    const auto lines = logger_.Lines();
    ASSERT_EQ(3U, lines.size());
    EXPECT_EQ((Line{0, "Exception caught in : Unknown (0x0)"}), lines[1]);
    EXPECT_EQ((Line{1, Started(daemon, daemon.executablePath + " 0")}), lines[2]);
    EXPECT_EQ(1U, daemon.restarts);
}

TEST_F(SupervisionPassTest, Crash_is_logged_with_the_name_of_the_exception)
{
    ProcessInfo& daemon = Add(0, TestProgram("crashes"), {});
    Run();
    WaitForEnd(daemon);
    Run();
    EXPECT_EQ((Line{0, "Exception caught in : Access violation"}), logger_.Lines().at(1));
}

TEST_F(SupervisionPassTest, End_of_a_service_is_logged_with_the_name_of_the_service)
{
    ProcessInfo& daemon = Add(0, TestProgram("exits_with"), {"3221225477"}); // 0xC0000005
    Run();
    WaitForEnd(daemon);
    daemon.serviceName = "Svc";
    Run();
    EXPECT_EQ((Line{0, "Exception caught in Svc: Access violation"}), logger_.Lines().at(1));
}

TEST_F(SupervisionPassTest, Process_that_ended_with_exit_code_259_counts_as_running)
{
    ProcessInfo& daemon = Add(0, TestProgram("exits_with"), {"259"});
    Run();
    WaitForEnd(daemon);
    Run();
    EXPECT_EQ(1U, logger_.Lines().size());
    EXPECT_EQ(1U, daemon.restarts);
}

TEST_F(SupervisionPassTest, Process_whose_exit_code_cannot_be_read_counts_as_ended)
{
    ProcessInfo& daemon = Add(0, TestProgram("no_windows"), {});
    Run();
    HANDLE withoutQuery = nullptr;
    DuplicateHandle(GetCurrentProcess(), daemon.process.Get(), GetCurrentProcess(), &withoutQuery,
                    SYNCHRONIZE, FALSE, 0);
    daemon.process.Reset(withoutQuery);
    const DWORD first = daemon.processId;
    Run();
    EXPECT_EQ((Line{0, "Exception caught in : Unknown (0xffffffff)"}), logger_.Lines().at(1));
    EXPECT_NE(first, daemon.processId);
}

TEST_F(SupervisionPassTest, Handle_of_an_ended_process_stays_open_after_the_restart)
{
    ProcessInfo& daemon = Add(0, TestProgram("exits_with"), {"0"});
    Run();
    const HANDLE first = daemon.process.Get();
    WaitForEnd(daemon);
    Run();
    EXPECT_NE(first, daemon.process.Get());
    EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(first, 0)); // signalled: the ended process
    CloseHandle(first);
}

TEST_F(SupervisionPassTest, Missing_program_is_logged_and_counted_in_every_pass)
{
    const ProcessInfo& daemon = Add(0, "C:\\missing.exe", {"-x"});
    Run();
    Run();
    const Line expected{1, "Unable to start C:\\missing.exe -x "};
    EXPECT_EQ((std::vector<Line>{expected, expected}), logger_.Lines());
    EXPECT_EQ(2U, daemon.restarts);
    EXPECT_FALSE(daemon.process);
}

TEST_F(SupervisionPassTest, Failed_restart_is_logged_with_the_old_process_id)
{
    ProcessInfo& daemon = Add(5, TestProgram("exits_with"), {});
    Run();
    WaitForEnd(daemon);
    const DWORD processId = daemon.processId;
    daemon.executablePath = "C:\\missing.exe";
    Run();
    EXPECT_EQ((Line{1, "Unable to start DaemonId(5) PId(" + std::to_string(processId) +
                           ") : C:\\missing.exe "}),
              logger_.Lines().at(2));
    EXPECT_FALSE(daemon.process);
}

TEST_F(SupervisionPassTest, First_start_of_an_attached_daemon_is_logged_at_level_1)
{
    ProcessInfo& daemon = Add(0, TestProgram("no_windows"), {});
    daemon.attached = true;
    Run();
    EXPECT_EQ((std::vector<Line>{{1, Started(daemon, daemon.executablePath)}}), logger_.Lines());
}

TEST_F(SupervisionPassTest, Start_after_a_failed_start_is_logged_at_level_1)
{
    ProcessInfo& daemon = Add(0, "C:\\missing.exe", {});
    Run();
    daemon.executablePath = TestProgram("no_windows");
    Run();
    EXPECT_EQ((Line{1, Started(daemon, daemon.executablePath)}), logger_.Lines().at(1));
}

TEST_F(SupervisionPassTest, Daemons_are_checked_in_the_order_of_their_ids)
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

} // namespace vqrx::test
