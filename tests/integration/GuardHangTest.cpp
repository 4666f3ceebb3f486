// The guard's watch in this program, with short times and the real supervisor.
#include "ChildProcess.h"
#include "FileContent.h"
#include "GuardedMachine.h"
#include "PublishedControl.h"
#include "SupervisorCheck.h"
#include "SupervisorProcess.h"
#include "TestService.h"
#include "Watch.h"
#include "com/ComApartment.h"
#include "daemon_manager/SupervisorClient.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <filesystem>
#include <memory>
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

class GuardHang : public ::testing::Test {
protected:
    GuardHang()
    {
        std::filesystem::create_directory(machine_.Root() + "\\Logs");
        log_ = std::make_shared<guard::v0::GuardLog>(machine_.GuardLog());
    }
    ~GuardHang() override { StopWatch(); }
    GuardHang(const GuardHang&) = delete;
    GuardHang& operator=(const GuardHang&) = delete;

    void StartWatch(const std::string& program = ProductProgram("DaemonManager.exe"))
    {
        guard::v0::WatchSettings settings;
        settings.program = program;
        settings.fleet = machine_.App() + "\\fleet.txt";
        settings.dumpFile = Dump();
        settings.times.checkMs = 100;
        settings.times.answerMs = 1000;
        settings.times.stillStartingMs = 100;
        settings.onEnding = [this] { ++endings_; };
        thread_ = std::thread([this, settings] {
            const system::com::v1::ComApartment apartment;
            guard::v0::Watch(settings, log_, stop_.Get()).Run();
        });
    }

    void StopWatch()
    {
        SetEvent(stop_.Get());
        if (thread_.joinable()) {
            thread_.join();
        }
    }

    bool Logged(const std::string& text) const
    {
        const auto log = ReadRingFile(machine_.GuardLog());
        return std::any_of(log.begin(), log.end(),
                           [&](const RingRecord& record) { return record.text == text; });
    }

    std::string Dump() const { return machine_.Root() + "\\Logs\\DaemonManager.dmp"; }

    GuardedMachine machine_;
    std::shared_ptr<guard::v0::GuardLog> log_;
    const UniqueKernelHandle stop_{CreateEventW(nullptr, TRUE, FALSE, nullptr)};
    int endings_ = 0;
    std::thread thread_;
};

TEST_F(GuardHang, Supervisor_that_does_not_answer_is_dumped_ended_and_replaced)
{
    StartWatch();
    ASSERT_TRUE(machine_.WaitForTakeOver());
    const DWORD first = GuardedMachine::WaitForSupervisor();
    ASSERT_TRUE(SuspendProcess(first));
    EXPECT_NE(
        machine_.WaitForGuardLog("Supervisor hangs and is ended: process " + std::to_string(first)),
        "");
    EXPECT_TRUE(Logged("Supervisor does not answer, 3 of 3: no answer within 1000 ms"));
    EXPECT_EQ(machine_.WaitForGuardLog("Dump of the supervisor: "),
              "Dump of the supervisor: written to " + Dump());
    ASSERT_TRUE(machine_.WaitForTakeOver(2));
    EXPECT_NE(GuardedMachine::WaitForSupervisor(), first);
    const std::string dump = ReadText(Dump());
    EXPECT_EQ(dump.substr(0, 4), "MDMP");
    EXPECT_FALSE(std::filesystem::exists(Dump() + ".new"));
}

// As after a check that was under way when the supervisor was suspended: it keeps its connection.
TEST_F(GuardHang, Connection_from_before_does_not_make_a_hanging_supervisor_look_busy)
{
    StartWatch();
    ASSERT_TRUE(machine_.WaitForTakeOver());
    const DWORD first = GuardedMachine::WaitForSupervisor();
    const daemon_manager::SupervisorClient connected; // the guard's watch is in this process, too
    ASSERT_TRUE(SuspendProcess(first));
    EXPECT_NE(
        machine_.WaitForGuardLog("Supervisor hangs and is ended: process " + std::to_string(first)),
        "");
    EXPECT_TRUE(Logged("Supervisor does not answer, 3 of 3: no answer within 1000 ms"));
}

TEST_F(GuardHang, Supervisor_that_hung_before_the_guard_began_is_ended_and_replaced)
{
    const system::com::v1::ComApartment apartment;
    const CapturedProgram supervisor('"' + ProductProgram("DaemonManager.exe") + '"');
    ASSERT_TRUE(WaitUntil([] { return guard::v0::IsPublished(); }));
    ASSERT_TRUE(SuspendProcess(supervisor.Pid()));
    StartWatch();
    EXPECT_NE(machine_.WaitForGuardLog("Supervisor hangs and is ended: process " +
                                       std::to_string(supervisor.Pid())),
              "");
    EXPECT_TRUE(Logged("Supervisor does not answer, 3 of 3: no answer within 1000 ms"));
    ASSERT_TRUE(machine_.WaitForTakeOver());
    EXPECT_NE(GuardedMachine::WaitForSupervisor(), supervisor.Pid());
}

TEST_F(GuardHang, Checks_of_a_supervisor_that_hangs_wait_on_one_thread)
{
    const system::com::v1::ComApartment apartment;
    const CapturedProgram supervisor('"' + ProductProgram("DaemonManager.exe") + '"');
    ASSERT_TRUE(WaitUntil([] { return guard::v0::IsPublished(); }));
    ASSERT_TRUE(SuspendProcess(supervisor.Pid()));
    guard::v0::SupervisorChecker checker;
    const auto check = [&] { return checker.Check(std::chrono::milliseconds(100)).result; };
    EXPECT_EQ(check(), guard::v0::CheckResult::kSilent);
    const std::size_t threads = CountOfThreads(GetCurrentProcessId());
    for (int again = 0; again < 10; ++again) {
        EXPECT_EQ(check(), guard::v0::CheckResult::kSilent);
    }
    EXPECT_LT(CountOfThreads(GetCurrentProcessId()), threads + 5); // COM may begin some of its own
}

// The supervisor would start the program twice when the process ends.
TEST_F(GuardHang, Process_is_not_attached_again_while_the_log_does_not_show_its_attach)
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

TEST_F(GuardHang, Stop_ends_the_supervisor_in_order_and_its_daemons_run_on)
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

TEST_F(GuardHang, Supervisor_that_waits_for_the_firewall_is_waited_for_and_the_log_says_so)
{
    const ReadyEvent hold;
    TestService firewall("MpsSvc", SERVICE_WIN32_OWN_PROCESS, SERVICE_DEMAND_START, 0, hold.Name());
    firewall.Start(false);
    StartWatch();
    EXPECT_NE(machine_.WaitForGuardLog("Supervisor is not published yet after 0 s: it may wait for "
                                       "the firewall service; the guard waits on"),
              "");
    hold.Signal();
    ASSERT_TRUE(machine_.WaitForTakeOver());
}

TEST_F(GuardHang, Stop_during_the_start_of_the_supervisor_ends_both)
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

TEST_F(GuardHang, Object_of_another_program_is_not_taken_for_that_of_a_supervisor_that_starts)
{
    const system::com::v1::ComApartment apartment;
    const ReadyEvent hold;
    TestService firewall("MpsSvc", SERVICE_WIN32_OWN_PROCESS, SERVICE_DEMAND_START, 0, hold.Name());
    firewall.Start(false);
    const PublishedControl impostor;
    StartWatch();
    EXPECT_NE(machine_.WaitForGuardLog("Supervisor is not published yet after 0 s: "), "");
    hold.Signal();
    EXPECT_NE(machine_.WaitForGuardLog("Supervisor has ended without an order: "), "");
    EXPECT_NE(machine_.WaitForGuardLog("Another object is published under the supervisor's name."),
              "");
    StopWatch();
    EXPECT_EQ(impostor.Calls(), 0);
}

TEST_F(GuardHang, Program_that_is_missing_is_reported_and_tried_again)
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
