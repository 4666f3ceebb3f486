// Calls of a client to the real supervisor: Launch, Stop, Detach and Exit.
#include "ChildProcess.h"
#include "Daemonctl.h"
#include "SupervisorProcess.h"
#include "SystemHandles.h"
#include "code_page/CodePage.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <string>
#include <vector>

namespace vqrx::test {
namespace {

using daemon_manager::DaemonRequest;

DaemonRequest Launch(SupervisorProcess& supervisor, const std::string& program,
                     const std::vector<std::wstring>& arguments = {})
{
    return supervisor.Client().Launch(
        system::code_page::v1::NarrowToWide(TestProgram(program), CP_UTF8), arguments,
        daemon_manager::ArgumentCheck::kNone);
}

std::string Describe(DWORD daemonId, DWORD processId, const std::string& command)
{
    return "DaemonId(" + std::to_string(daemonId) + ") PId(" + std::to_string(processId) +
           ") : " + command;
}

std::wstring Wide(const std::string& text)
{
    return {text.begin(), text.end()};
}

TEST(Control, Exit_of_a_client_ends_the_supervisor_in_order)
{
    SupervisorProcess supervisor;
    EXPECT_EQ(supervisor.Exit(), 0U);
    EXPECT_FALSE(FindPublished());
    const auto log = OrderlyLog(supervisor.Log());
    ASSERT_GE(log.size(), 2U);
    EXPECT_EQ(log[log.size() - 2].text, "Exit");
    EXPECT_EQ(log[log.size() - 2].level, 2);
    EXPECT_EQ(log.back().text, "Deamon Thread is exiting...");
    EXPECT_EQ(log.back().level, 2);
}

TEST(Control, Exit_leaves_three_registered_daemons_running)
{
    SupervisorProcess supervisor;
    std::vector<DWORD> processes;
    for (const wchar_t* name : {L"a", L"b", L"c"}) {
        processes.push_back(
            supervisor.WaitForStart(Launch(supervisor, "no_windows", {name}).daemonId));
    }
    EXPECT_EQ(supervisor.Exit(), 0U);
    const auto log = OrderlyLog(supervisor.Log());
    ASSERT_GE(log.size(), 2U);
    EXPECT_EQ(log[log.size() - 2].text, "3 Processes still registered");
    EXPECT_EQ(log[log.size() - 2].level, 1);
    EXPECT_EQ(log.back().text, "Deamon Thread is exiting...");
    for (const DWORD process : processes) {
        EXPECT_TRUE(IsRunning(process)) << process;
    }
}

TEST(Control, Launch_starts_a_program_and_the_supervisor_restarts_it_after_its_end)
{
    SupervisorProcess supervisor;
    const DaemonRequest launched = Launch(supervisor, "no_windows", {L"x"});
    EXPECT_TRUE(launched.done);
    EXPECT_EQ(launched.daemonId, 0U);
    const std::string command = TestProgram("no_windows") + " x ";
    const DWORD first = supervisor.WaitForStart(0);
    ASSERT_NE(first, 0U);
    EXPECT_TRUE(supervisor.WaitForLog(2, "Start " + Describe(0, first, command)));

    KillProcess(first); // its exit code is 9
    const DWORD second = supervisor.WaitForStart(0, first);
    ASSERT_NE(second, 0U);
    EXPECT_TRUE(supervisor.WaitForLog(0, "Exception caught in : Unknown (0x9)"));
    EXPECT_TRUE(supervisor.WaitForLog(1, "Start " + Describe(0, second, command)));
    EXPECT_TRUE(IsRunning(second));
}

TEST(Control, The_supervisor_tries_to_start_a_missing_program_in_every_pass)
{
    SupervisorProcess supervisor;
    EXPECT_TRUE(supervisor.Client().Launch(L"C:\\nowhere\\at all.exe", {L"x"}).done);
    EXPECT_TRUE(supervisor.WaitForLog(1, "Unable to start C:\\nowhere\\at all.exe x ", 3));
}

TEST(Control, Launch_of_the_same_program_and_arguments_returns_the_first_id)
{
    SupervisorProcess supervisor;
    EXPECT_EQ(Launch(supervisor, "no_windows", {L"a", L"b"}).daemonId, 0U);
    const DaemonRequest again = Launch(supervisor, "no_windows", {L"a", L"b"});
    EXPECT_FALSE(again.done);
    EXPECT_EQ(again.daemonId, 0U);
    const DaemonRequest otherOrder = Launch(supervisor, "no_windows", {L"b", L"a"});
    EXPECT_TRUE(otherOrder.done);
    EXPECT_EQ(otherOrder.daemonId, 1U);
}

TEST(Control, Stop_asks_a_daemon_with_a_window_to_quit)
{
    SupervisorProcess supervisor;
    const ReadyEvent ready;
    Launch(supervisor, "quits", {Wide(ready.Name())});
    const DWORD process = supervisor.WaitForStart(0);
    ASSERT_TRUE(ready.Wait());
    EXPECT_TRUE(supervisor.Client().Stop(0));
    EXPECT_TRUE(supervisor.WaitForLog(
        1, "Stop (1) " + Describe(0, process, TestProgram("quits") + " " + ready.Name() + " ")));
    EXPECT_FALSE(IsRunning(process));
    EXPECT_FALSE(supervisor.Client().Stop(0));
}

TEST(Control, Stop_terminates_a_daemon_without_windows)
{
    SupervisorProcess supervisor;
    Launch(supervisor, "no_windows");
    const DWORD process = supervisor.WaitForStart(0);
    EXPECT_TRUE(supervisor.Client().Stop(0));
    EXPECT_TRUE(supervisor.WaitForLog(
        1, "Stop (2) " + Describe(0, process, TestProgram("no_windows") + " ")));
    EXPECT_TRUE(WaitUntil([&] { return !IsRunning(process); }));
}

TEST(Control, Detach_of_a_launched_daemon_fails_and_the_supervisor_still_restarts_it)
{
    SupervisorProcess supervisor;
    Launch(supervisor, "no_windows");
    const DWORD first = supervisor.WaitForStart(0);
    EXPECT_FALSE(supervisor.Client().Detach(0));
    KillProcess(first);
    EXPECT_NE(supervisor.WaitForStart(0, first), 0U);
}

TEST(Control, Calls_of_a_client_do_not_wait_for_a_stop_of_another_client)
{
    SupervisorProcess supervisor;
    const ReadyEvent ready;
    const ReadyEvent quit;
    const ReadyEvent mayEnd;
    Launch(supervisor, "signals_quit",
           {Wide(ready.Name()), Wide(quit.Name()), Wide(mayEnd.Name())});
    ASSERT_TRUE(ready.Wait());
    const CapturedProgram stopping(ProductProgram("daemonctl.exe") + " stop 0");
    ASSERT_TRUE(quit.Wait());
    EXPECT_EQ(Launch(supervisor, "no_windows").daemonId, 1U);
    EXPECT_TRUE(supervisor.Client().Stop(1));
    EXPECT_TRUE(stopping.Running());
    mayEnd.Signal();
    EXPECT_EQ(stopping.ExitCode(), 0U);
    EXPECT_EQ(stopping.Output(), "daemon 0 stopped\n");
}

// Returns how many handles a process has open.
std::ptrdiff_t HandlesOf(DWORD processId)
{
    const std::vector<SystemHandle> handles = AllSystemHandles();
    return std::count_if(handles.begin(), handles.end(), [processId](const SystemHandle& handle) {
        return handle.ownerId == processId;
    });
}

TEST(Control, Clients_that_come_and_go_leave_no_handle_in_the_supervisor)
{
    constexpr int clients = 8;
    SupervisorProcess supervisor;
    const Answer unknown{1, "",
                         "daemonctl: daemon 99 is unknown or was not attached\n"
                         "  To see all daemons: daemonctl ps\n"};
    EXPECT_EQ(Daemonctl("detach 99"), unknown); // the first makes the threads that serve clients
    const std::ptrdiff_t before = HandlesOf(supervisor.Process().Pid());
    for (int client = 0; client < clients; ++client) {
        EXPECT_EQ(Daemonctl("detach 99"), unknown);
    }
    EXPECT_LT(HandlesOf(supervisor.Process().Pid()), before + clients);
}

TEST(Control, Exit_waits_for_a_running_stop)
{
    SupervisorProcess supervisor;
    const ReadyEvent ready;
    const ReadyEvent quit;
    const ReadyEvent mayEnd;
    Launch(supervisor, "signals_quit",
           {Wide(ready.Name()), Wide(quit.Name()), Wide(mayEnd.Name())});
    const DWORD process = supervisor.WaitForStart(0);
    ASSERT_TRUE(ready.Wait());
    const CapturedProgram stopping(ProductProgram("daemonctl.exe") + " stop 0");
    ASSERT_TRUE(quit.Wait());
    supervisor.Client().Exit();
    ASSERT_TRUE(WaitUntil([] { return !FindPublished(); })); // The shutdown has begun.
    mayEnd.Signal();
    EXPECT_EQ(supervisor.ExitCode(), 0U);
    EXPECT_TRUE(supervisor.WaitForLog(
        1, "Stop (1) " + Describe(0, process,
                                  TestProgram("signals_quit") + " " + ready.Name() + " " +
                                      quit.Name() + " " + mayEnd.Name() + " ")));
    EXPECT_EQ(supervisor.CountLog(2, "Deamon Thread is exiting..."), 1U);
}

} // namespace
} // namespace vqrx::test
