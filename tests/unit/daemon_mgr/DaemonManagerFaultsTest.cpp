// Faults that begin while the manager runs, and end again: a failed request reports it, every
// daemon stays registered, and after the fault all requests work again.
#include "ImportPatch.h"
#include "ManagerFixture.h"
#include "StandInFirewall.h"
#include "StandInWmi.h"
#include "TestService.h"

#include <gtest/gtest.h>

#include <atomic>
#include <string>

namespace vqrx::test {
namespace {

using system::daemon::daemon_mgr::v0::kNoId;

using CreateProcessFunction = BOOL WINAPI(LPCSTR, LPSTR, LPSECURITY_ATTRIBUTES,
                                          LPSECURITY_ATTRIBUTES, BOOL, DWORD, LPVOID, LPCSTR,
                                          LPSTARTUPINFOA, LPPROCESS_INFORMATION);
CreateProcessFunction* realCreate = nullptr;
std::atomic<int> creations = 0;
std::atomic<bool> memoryForProcesses = true;

BOOL WINAPI CreateWhileThereIsMemory(LPCSTR path, LPSTR command, LPSECURITY_ATTRIBUTES process,
                                     LPSECURITY_ATTRIBUTES thread, BOOL inherit, DWORD flags,
                                     LPVOID environment, LPCSTR folder, LPSTARTUPINFOA startup,
                                     LPPROCESS_INFORMATION started)
{
    ++creations;
    if (!memoryForProcesses) {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return FALSE;
    }
    return realCreate(path, command, process, thread, inherit, flags, environment, folder, startup,
                      started);
}

BOOL WINAPI RefuseToTerminate(HANDLE, UINT)
{
    SetLastError(ERROR_ACCESS_DENIED);
    return FALSE;
}

class DaemonManagerFaultsTest : public ManagerFixture {
protected:
    DaemonManagerFaultsTest() { service_.Start(); }

    TestService service_{"MpsSvc"};
    StandInFirewall firewall_;
    StandInWmi wmi_; // answers from the live system
};

} // namespace

TEST_F(DaemonManagerFaultsTest, Program_that_Windows_cannot_start_is_tried_until_it_starts)
{
    const ImportPatch patch("CreateProcessA", CreateWhileThereIsMemory, realCreate);
    memoryForProcesses = false;
    Make();
    const ReadyEvent ready;
    DWORD daemonId = 9;
    ASSERT_EQ(S_OK, Launch(TestProgram("no_windows"), {ready.Name()}, &daemonId));
    sink_.WaitForPrefix("Unable to start " + TestProgram("no_windows"), 3);
    EXPECT_EQ(S_FALSE, Launch(TestProgram("no_windows"), {ready.Name()}, &daemonId));
    memoryForProcesses = true;
    EXPECT_TRUE(ready.Wait());
    const auto started = sink_.WaitForPrefix("Start DaemonId(0)");
    EXPECT_EQ(1, started.level); // a later attempt is a warning
    EXPECT_TRUE(IsRunning(PidIn(started.text)));
    manager_.Reset();
}

TEST_F(DaemonManagerFaultsTest,
       Stop_of_a_process_that_cannot_be_terminated_logs_a_line_and_removes_the_daemon)
{
    Make();
    const ReadyEvent ready;
    DWORD processId = 0;
    const DWORD daemonId = LaunchAndWait("no_windows", ready, processId);
    {
        const ImportPatch patch("TerminateProcess", RefuseToTerminate);
        EXPECT_EQ(S_FALSE, manager_->Stop(daemonId));
    }
    EXPECT_TRUE(sink_.WaitForText(
        "Unable to stop " +
        Description(daemonId, processId, TestProgram("no_windows") + " " + ready.Name())));
    EXPECT_TRUE(IsRunning(processId));
    EXPECT_EQ(S_FALSE, manager_->Stop(daemonId));
}

TEST_F(DaemonManagerFaultsTest,
       Daemons_start_and_stop_while_the_firewall_fails_and_have_rules_again_after_that)
{
    Make();
    const std::string program = TestProgram("no_windows");
    TheFirewallScript().rules = static_cast<HRESULT>(0x800706BA); // RPC_S_SERVER_UNAVAILABLE
    const ReadyEvent first;
    DWORD processId = 0;
    const DWORD daemonId = LaunchAndWait("no_windows", first, processId);
    EXPECT_TRUE(StoredFirewallRules().empty());
    EXPECT_EQ(S_OK, manager_->Stop(daemonId));
    sink_.WaitForPrefix("Firewall: Failed to retrieve", 2);
    EXPECT_EQ(2U,
              sink_.Count(0, "Firewall: Failed to retrieve firewall rules collection: 0x800706ba"));

    TheFirewallScript().rules = S_OK;
    const ReadyEvent second;
    LaunchAndWait("no_windows", second, processId);
    EXPECT_EQ(1U, StoredFirewallRules().count(L"allowing " +
                                              std::wstring(program.begin(), program.end())));
}

TEST_F(DaemonManagerFaultsTest, Attach_fails_while_WMI_fails_and_Launch_still_works)
{
    const ReadyEvent running;
    const ChildProcess child("\"" + TestProgram("no_windows") + "\" " + running.Name());
    ASSERT_TRUE(running.Wait());
    Make();
    TheWmiScript().query = static_cast<HRESULT>(0x800706BA); // RPC_S_SERVER_UNAVAILABLE
    DWORD daemonId = 9;
    for (int attempt = 0; attempt < 3; ++attempt) {
        EXPECT_EQ(static_cast<HRESULT>(0x800706BA),
                  manager_->Attach(child.Pid(), nullptr, &daemonId));
        EXPECT_EQ(kNoId, daemonId);
    }
    const ReadyEvent ready;
    DWORD processId = 0;
    EXPECT_EQ(3U, LaunchAndWait("no_windows", ready, processId));
    TheWmiScript().query = S_OK;
    EXPECT_EQ(S_OK, manager_->Attach(child.Pid(), nullptr, &daemonId));
    EXPECT_EQ(4U, daemonId);
}

// The logger's worker thread is blocked until messages are lost. Neither the passes nor the clients
// wait for it.
TEST_F(DaemonManagerFaultsTest, Passes_and_requests_go_on_while_a_sink_blocks_the_log)
{
    const ImportPatch patch("CreateProcessA", CreateWhileThereIsMemory, realCreate);
    memoryForProcesses = false;
    creations = 0;
    Make(1);
    DWORD daemonId = 9;
    for (int number = 0; number < 50; ++number) {
        ASSERT_EQ(S_OK, Launch("C:\\missing.exe", {std::to_string(number)}, &daemonId));
    }
    sink_.BlockNextWrite();
    ASSERT_TRUE(sink_.WaitUntilBlocked());
    const int before = creations;
    const ULONGLONG start = GetTickCount64();
    // Each attempt logs a line. 1200 lines are more than the queue of the logger holds.
    while (creations < before + 1200 && GetTickCount64() - start < 60000) {
        EXPECT_EQ(S_FALSE, Launch("C:\\missing.exe", {"0"}, &daemonId));
        Sleep(1);
    }
    EXPECT_LE(before + 1200, creations);
    EXPECT_EQ(0U, sink_.Count(0, "Overflowed message queue."));
    sink_.Release();
    ASSERT_TRUE(sink_.WaitForText("Overflowed message queue."));
    const auto lines = sink_.Records().size();
    EXPECT_TRUE(sink_.WaitForCount(lines + 500)); // the logger works again
    manager_.Reset();
}

} // namespace vqrx::test
