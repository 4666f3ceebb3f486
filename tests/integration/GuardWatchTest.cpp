// The guard's watch over a supervisor that starts, hands over, or ends.
#include "ChildProcess.h"
#include "GuardWatchFixture.h"
#include "SupervisorProcess.h"
#include "TestService.h"
#include "daemon_manager/SupervisorClient.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>

namespace vqrx::test {
namespace {

using system::win32::v1::UniqueKernelHandle;

// A pipe that nobody reads, as the standard output of a program. Destroyed, it refuses all output.
class UnreadPipe {
public:
    UnreadPipe()
    {
        SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
        EXPECT_TRUE(CreatePipe(read_.Put(), write_.Put(), &inherited, kCapacity));
        SetHandleInformation(read_.Get(), HANDLE_FLAG_INHERIT, 0);
    }
    UnreadPipe(const UnreadPipe&) = delete;
    UnreadPipe& operator=(const UnreadPipe&) = delete;
    ~UnreadPipe() { Close(); }

    HANDLE WriteEnd() const { return write_.Get(); }

    // Fills the pipe: whoever writes to it after that waits until Close().
    void Fill()
    {
        writer_ = std::thread([this] {
            const std::string much(std::size_t{16} * kCapacity, 'x');
            DWORD written = 0;
            WriteFile(write_.Get(), much.data(), static_cast<DWORD>(much.size()), &written,
                      nullptr);
        });
        EXPECT_TRUE(WaitUntil([this] {
            DWORD bytes = 0;
            PeekNamedPipe(read_.Get(), nullptr, 0, nullptr, &bytes, nullptr);
            return bytes >= kCapacity;
        }));
    }

    void Close()
    {
        read_.Reset();
        if (writer_.joinable()) {
            writer_.join();
        }
    }

private:
    static constexpr DWORD kCapacity = 65536;
    UniqueKernelHandle read_;
    UniqueKernelHandle write_;
    std::thread writer_;
};

// The supervisor would start the program twice when the process ends.
TEST_F(GuardWatch, Process_is_not_attached_again_while_the_log_does_not_show_its_attach)
{
    const std::string worker = TestProgram("no_windows");
    // cmd starts the worker and ends, so no running process is the parent of the worker.
    const CapturedProgram shell("cmd /d /c start /b \"\" \"" + worker + '"');
    EXPECT_EQ(shell.ExitCode(), 0U);
    machine_.WriteFleet(worker + "\n");
    UnreadPipe console;
    const ChildProcess supervisor('"' + ProductProgram("DaemonManager.exe") + '"',
                                  console.WriteEnd());
    const auto shows = [this](const std::string& beginning) {
        const auto log = ReadRingFile(machine_.SupervisorLog());
        return std::count_if(log.begin(), log.end(), [&](const RingRecord& record) {
            return record.text.starts_with(beginning);
        });
    };
    ASSERT_TRUE(WaitUntil([&] { return shows("Deamon Thread started") == 1; }));
    console.Fill(); // no record reaches the log now
    StartWatch();
    EXPECT_EQ(machine_.WaitForGuardLog("Hand-over: given up: "),
              "Hand-over: given up: the log does not show daemon 0, which was attached; nothing "
              "more is attached before that");
    console.Close();
    ASSERT_NE(machine_.WaitForGuardLog("Fleet: 0 launched, 0 attached, 1 there already, 0 not"),
              "");
    EXPECT_EQ(shows("Attach "), 1);
    StopWatch();
}

// The log is damaged, and folders stand in the way of the names under which it could be kept.
TEST_F(GuardWatch,
       Without_a_log_that_shows_the_supervisor_nothing_is_launched_and_the_guard_says_so)
{
    const std::filesystem::path logs = std::filesystem::path(machine_.Root()) / "Logs";
    for (const char* name : {"DaemonManager.log.damaged", "DaemonManager.log.damaged2"}) {
        std::filesystem::create_directories(logs / name / "not empty");
    }
    std::ofstream(machine_.SupervisorLog(), std::ios::binary)
        << "0x0000001F\r\n0;date;x;2;damaged\r\n";
    machine_.WriteFleet(TestProgram("no_windows") + "\n");
    StartWatch();
    EXPECT_EQ(machine_.WaitForGuardLog("Hand-over: without "),
              "Hand-over: without the supervisor's log nothing is attached or launched: only the "
              "log shows what runs, and a program could be started twice. To find the fault: "
              "daemonctl doctor");
    EXPECT_TRUE(ProcessesNamed("no_windows.exe").empty());
    StopWatch();
}

TEST_F(GuardWatch, Stop_ends_the_supervisor_in_order_and_its_daemons_run_on)
{
    machine_.WriteFleet(TestProgram("no_windows") + "\n");
    StartWatch();
    ASSERT_TRUE(machine_.WaitForTakeOver());
    ASSERT_TRUE(WaitUntil([] { return ProcessesNamed("no_windows.exe").size() == 1; }));
    StopWatch();
    EXPECT_TRUE(ProcessesNamed("DaemonManager.exe").empty());
    EXPECT_EQ(ProcessesNamed("no_windows.exe").size(), 1U);
    EXPECT_NE(machine_.WaitForGuardLog("Supervisor has ended: process "), "");
    const auto records = OrderlyLog(ReadRingFile(machine_.SupervisorLog()));
    ASSERT_FALSE(records.empty());
    EXPECT_EQ(records.back().text, "Deamon Thread is exiting...");
}

TEST_F(GuardWatch, Stop_during_the_start_of_the_supervisor_ends_both)
{
    const ReadyEvent hold;
    TestService firewall("MpsSvc", SERVICE_WIN32_OWN_PROCESS, SERVICE_DEMAND_START, 0, hold.Name());
    firewall.Start(false);
    StartWatch();
    const DWORD supervisor = GuardedMachine::WaitForSupervisor();
    StopWatch();
    EXPECT_NE(machine_.WaitForGuardLog("Supervisor was ended before it was published: process " +
                                       std::to_string(supervisor)),
              "");
    EXPECT_TRUE(ProcessesNamed("DaemonManager.exe").empty());
    hold.Signal();
}

TEST_F(GuardWatch, Stop_leaves_a_supervisor_alone_that_still_starts_and_that_it_did_not_start)
{
    const ReadyEvent hold;
    TestService firewall("MpsSvc", SERVICE_WIN32_OWN_PROCESS, SERVICE_DEMAND_START, 0, hold.Name());
    firewall.Start(false);
    const CapturedProgram supervisor('"' + ProductProgram("DaemonManager.exe") + '"');
    const std::string process = "process " + std::to_string(supervisor.Pid());
    StartWatch();
    ASSERT_NE(machine_.WaitForGuardLog("Supervisor runs already: " + process), "");
    StopWatch();
    EXPECT_NE(machine_.WaitForGuardLog("Supervisor is not published, and this guard did not start "
                                       "it: " +
                                       process + " runs on"),
              "");
    EXPECT_TRUE(IsRunning(supervisor.Pid()));
    hold.Signal();
}

// It does not answer at first, so the watch does not know yet that it is published.
TEST_F(GuardWatch, Stop_ends_a_published_supervisor_in_order_also_before_it_has_answered)
{
    const system::com::v1::ComApartment apartment;
    const CapturedProgram supervisor('"' + ProductProgram("DaemonManager.exe") + '"');
    ASSERT_TRUE(WaitUntil([] { return guard::v0::IsPublished(); }));
    ASSERT_TRUE(SuspendProcess(supervisor.Pid()));
    SetEvent(stop_.Get());
    StartWatch();
    const std::string process = "process " + std::to_string(supervisor.Pid());
    EXPECT_NE(machine_.WaitForGuardLog("Supervisor is asked to end: " + process), "");
    EXPECT_TRUE(ResumeProcess(supervisor.Pid()));
    StopWatch();
    EXPECT_NE(machine_.WaitForGuardLog("Supervisor has ended: " + process + "; its daemons run on"),
              "");
}

TEST_F(GuardWatch, Fleet_file_that_is_mended_after_many_tries_is_applied)
{
    tryAgainMs_ = 100;
    machine_.WriteFleet("\"x\n");
    StartWatch();
    EXPECT_NE(machine_.WaitForGuardLog("Hand-over: not complete after 10 tries; tried again every "
                                       "minute, after an hour every 10 minutes"),
              "");
    EXPECT_EQ(CountOfRecords("Fleet: nothing was launched"), 1);
    machine_.WriteFleet(TestProgram("no_windows") + "\n");
    EXPECT_NE(machine_.WaitForGuardLog("Fleet: 1 launched, 0 attached, 0 there already, 0 not"),
              "");
}

TEST_F(GuardWatch, Program_that_comes_to_the_folder_later_is_launched)
{
    tryAgainMs_ = 100;
    machine_.WriteFleet("no_windows.exe\n");
    StartWatch();
    ASSERT_NE(machine_.WaitForGuardLog("Fleet: nothing was launched"), "");
    std::filesystem::copy_file(TestProgram("no_windows"), machine_.App() + "\\no_windows.exe");
    EXPECT_NE(machine_.WaitForGuardLog("Fleet: 1 launched, 0 attached, 0 there already, 0 not"),
              "");
}

TEST_F(GuardWatch, Daemon_that_somebody_detached_is_not_attached_again_by_a_later_try)
{
    const system::com::v1::ComApartment apartment;
    tryAgainMs_ = 100;
    const TestService disabled("DmDisabled", SERVICE_WIN32_OWN_PROCESS, SERVICE_DISABLED);
    const std::string worker = TestProgram("no_windows");
    // cmd starts the worker and ends, so no running process is the parent of the worker.
    const CapturedProgram shell("cmd /d /c start /b \"\" \"" + worker + '"');
    EXPECT_EQ(shell.ExitCode(), 0U);
    machine_.WriteFleet(worker + "\nDmDisabled\n");
    StartWatch();
    ASSERT_NE(machine_.WaitForGuardLog("Fleet: 0 launched, 1 attached, 0 there already, 1 not"),
              "");
    ASSERT_NE(machine_.WaitForGuardLog("Fleet: 0 launched, 0 attached, 1 there already, 1 not"),
              "");
    EXPECT_TRUE(daemon_manager::SupervisorClient().Detach(0));
    EXPECT_EQ(machine_.WaitForGuardLog("Fleet: line 1: "),
              "Fleet: line 1: an earlier try launched or attached it; not done again, because "
              "somebody may have stopped or detached it");
    EXPECT_NE(machine_.WaitForGuardLog("Fleet: 0 launched, 0 attached, 0 there already, 1 not"),
              "");
    const auto log = ReadRingFile(machine_.SupervisorLog());
    EXPECT_EQ(
        std::count_if(log.begin(), log.end(),
                      [](const RingRecord& record) { return record.text.starts_with("Attach "); }),
        1);
}

TEST_F(GuardWatch, Program_that_is_missing_is_reported_and_tried_again)
{
    StartWatch("C:\\no\\such\\DaemonManager.exe");
    EXPECT_NE(machine_.WaitForGuardLog("Supervisor not started: C:\\no\\such\\DaemonManager.exe "
                                       "cannot be started: error 3",
                                       2),
              "");
    EXPECT_NE(machine_.WaitForGuardLog("Next start of the supervisor in 1 s"), "");
}

} // namespace
} // namespace vqrx::test
