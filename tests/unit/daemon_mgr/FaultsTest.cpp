// The manager among faults that come and go: what fails says so, what is registered stays so, and
// when the fault is over everything goes on.
#include "AllocationFault.h"
#include "ImportPatch.h"
#include "ManagerFixture.h"
#include "StandInFirewall.h"
#include "StandInWmi.h"
#include "TestService.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>

namespace vqrx::test {
namespace {

using system::com::v1::UniqueBstr;
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

class Fault : public ManagerFixture {
protected:
    Fault() { service_.Start(); }

    TestService service_{"MpsSvc"};
    StandInFirewall firewall_;
    StandInWmi wmi_; // answers from the live system
};

} // namespace

TEST_F(Fault, of_creating_a_process_is_tried_again_until_there_is_memory)
{
    const ImportPatch patch("CreateProcessA", CreateWhileThereIsMemory);
    realCreate = patch.Original<CreateProcessFunction>();
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
    EXPECT_EQ(1, started.level); // it is not the first attempt
    EXPECT_TRUE(IsRunning(PidIn(started.text)));
    manager_.Reset();
}

TEST_F(Fault, of_ending_a_process_is_said_and_the_daemon_is_no_longer_looked_after)
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

TEST_F(Fault, of_the_firewall_costs_the_rules_and_no_daemon_and_passes_by)
{
    Make();
    const std::string program = TestProgram("no_windows");
    TheFirewallScript().rules = static_cast<HRESULT>(0x800706BA); // its service has gone
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

TEST_F(Fault, of_wmi_costs_the_attaches_meanwhile_and_nothing_else)
{
    const ReadyEvent running;
    const ChildProcess child("\"" + TestProgram("no_windows") + "\" " + running.Name());
    ASSERT_TRUE(running.Wait());
    Make();
    TheWmiScript().query = static_cast<HRESULT>(0x800706BA); // its service has gone
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

// The worker that writes the log stands still for as long as it takes to lose messages. Nobody
// waits for it: neither the passes nor the clients.
TEST_F(Fault, of_a_sink_that_blocks_does_not_stop_supervision)
{
    const ImportPatch patch("CreateProcessA", CreateWhileThereIsMemory);
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
    while (creations < before + 1200 && GetTickCount64() - start < 60000) { // more than can wait
        EXPECT_EQ(S_FALSE, Launch("C:\\missing.exe", {"0"}, &daemonId));
        Sleep(1);
    }
    EXPECT_LE(before + 1200, creations);
    EXPECT_EQ(0U, sink_.Count(0, "Overflowed message queue."));
    sink_.Release();
    ASSERT_TRUE(sink_.WaitForText("Overflowed message queue."));
    const auto lines = sink_.Records().size();
    EXPECT_TRUE(sink_.WaitForCount(lines + 500)); // and it goes on
    manager_.Reset();
}

namespace {

/// Keeps nothing. Counts one line, and can be held. The line is too long for a string itself: a
/// record that has held it has memory for the lines that follow.
class MarkSink : public log::log_perf::v2::ILogSink {
public:
    static constexpr const char* kMark = "a mark behind all that was logged before";

    void Write(int, const log::log_perf::v2::Timestamp*, const char* text) override
    {
        const std::lock_guard hold(held);
        marks_ += std::string_view(text) == kMark ? 1 : 0;
    }
    int Marks() const { return marks_; }

    std::mutex held;

private:
    std::atomic<int> marks_ = 0;
};

/// No sink keeps anything, and no pass disturbs: what lives before a call that fails and after it
/// is the same.
class OutOfMemory : public ::testing::Test {
protected:
    static constexpr int kAtMost = 300; // allocations of one call

    OutOfMemory()
    {
        service_.Start();
        manager_ = system::com::v1::ComPtr<system::daemon::daemon_mgr::v0::DaemonManager>::Share(
            new system::daemon::daemon_mgr::v0::DaemonManager(GetCurrentThreadId(), INFINITE,
                                                              &logger_));
        logger_.AddSink(&sink_);
        FillLogger();
    }

    /// The logger keeps the memory of records that were delivered for those that come. Here it gets
    /// more of it than calls have under way, so that no line of the log takes memory for good.
    void FillLogger()
    {
        const std::string line(400, 'x');
        {
            const std::lock_guard hold(sink_.held);
            for (int i = 0; i < 64; ++i) {
                logger_.Log(0, "%s", line.c_str());
            }
        }
        LogMark();
        LogMark(); // collected when all before it had been delivered: they can be used again
    }

    void LogMark()
    {
        const int before = sink_.Marks();
        logger_.Log(0, "%s", MarkSink::kMark);
        while (sink_.Marks() == before) {
            Sleep(1);
        }
    }

    /// The logger's worker allocates now and then for an instant; what is left counts.
    static std::ptrdiff_t Live()
    {
        auto& notes = TheFirewallScript().askedFor; // what the stand-in notes is nobody's leak
        notes.clear();
        notes.shrink_to_fit();
        std::ptrdiff_t least = LiveAllocations();
        for (int sample = 0; sample < 4; ++sample) {
            Sleep(1);
            least = std::min(least, LiveAllocations());
        }
        return least;
    }

    /// Nothing more lives than before, once the worker has put away what it had at that instant.
    static bool ComesDownTo(std::ptrdiff_t before)
    {
        const ULONGLONG start = GetTickCount64();
        while (Live() > before) {
            if (GetTickCount64() - start > 10000) {
                return false;
            }
        }
        return true;
    }

    /// Another thread gets the table.
    bool TableIsFree()
    {
        HRESULT hr = E_FAIL;
        std::thread([&] {
            const system::com::v1::ComApartment apartment;
            hr = manager_->Detach(4711);
        }).join();
        return hr == S_FALSE;
    }

    system::com::v1::ComApartment apartment_;
    TestService service_{"MpsSvc"};
    StandInFirewall firewall_;
    StandInWmi wmi_;
    MarkSink sink_;
    log::log_perf::v2::LibLogPerf logger_;
    system::com::v1::ComPtr<system::daemon::daemon_mgr::v0::DaemonManager> manager_;
};

} // namespace

TEST_F(OutOfMemory, at_any_allocation_of_a_launch_fails_it_cleanly_and_uses_no_id)
{
    const UniqueBstr path(L"C:\\a program with a longer name.exe");
    DWORD used = 0;
    bool happened = true;
    for (int succeeding = 0; happened; ++succeeding) {
        ASSERT_GT(kAtMost, succeeding);
        Arguments arguments({"an argument that does not fit into a string itself", "second"});
        DWORD daemonId = 9;
        const std::ptrdiff_t before = Live();
        HRESULT hr = S_OK;
        {
            const AllocationFault fault(static_cast<std::size_t>(succeeding));
            hr = manager_->Launch(path.Get(), arguments.Put(), &daemonId);
            happened = fault.Happened();
        }
        if (hr == S_OK) { // what failed, if anything did, was the rule or a line of the log
            EXPECT_EQ(used, daemonId) << succeeding;
            ++used;
            EXPECT_EQ(S_OK, manager_->Stop(daemonId)) << succeeding;
            EXPECT_EQ(S_FALSE, manager_->Stop(daemonId)) << succeeding;
            continue;
        }
        EXPECT_TRUE(happened);
        EXPECT_EQ(E_OUTOFMEMORY, hr) << succeeding;
        EXPECT_EQ(kNoId, daemonId) << succeeding;
        EXPECT_TRUE(ComesDownTo(before)) << succeeding;
        EXPECT_TRUE(TableIsFree()) << succeeding;
    }
    EXPECT_LT(0U, used);
    EXPECT_TRUE(StoredFirewallRules().empty());
}

namespace {

using OpenProcessFunction = HANDLE WINAPI(DWORD, BOOL, DWORD);
OpenProcessFunction* realOpen = nullptr;
using CloseFunction = BOOL WINAPI(HANDLE);
CloseFunction* realCloseHandle = nullptr;
thread_local HANDLE openedHere = nullptr; // and not closed yet

HANDLE WINAPI OpenAndNote(DWORD access, BOOL inherit, DWORD processId)
{
    openedHere = realOpen(access, inherit, processId);
    return openedHere;
}

BOOL WINAPI CloseAndNote(HANDLE handle)
{
    if (handle == openedHere) {
        openedHere = nullptr;
    }
    return realCloseHandle(handle);
}

} // namespace

TEST_F(OutOfMemory, at_any_allocation_of_an_attach_fails_it_cleanly_and_closes_the_process)
{
    const ImportPatch open("OpenProcess", OpenAndNote);
    const ImportPatch close("CloseHandle", CloseAndNote);
    realOpen = open.Original<OpenProcessFunction>();
    realCloseHandle = close.Original<CloseFunction>();
    {
        // What the C++ library keeps for good from its first conversion of a number, it gets now.
        DWORD daemonId = 9;
        ASSERT_EQ(S_OK, manager_->Attach(GetCurrentProcessId(), nullptr, &daemonId));
        ASSERT_EQ(S_OK, manager_->Detach(daemonId));
    }
    for (int succeeding = 0;; ++succeeding) {
        ASSERT_GT(kAtMost, succeeding);
        Arguments arguments({"an argument that does not fit into a string itself", "second"});
        DWORD daemonId = 9;
        openedHere = nullptr;
        const std::ptrdiff_t before = Live();
        HRESULT hr = S_OK;
        bool happened = false;
        {
            const AllocationFault fault(static_cast<std::size_t>(succeeding));
            hr = manager_->Attach(GetCurrentProcessId(), arguments.Put(), &daemonId);
            happened = fault.Happened();
        }
        if (hr == S_OK) {
            // Every attempt uses its id up, and there was one before.
            EXPECT_EQ(static_cast<DWORD>(succeeding) + 1, daemonId);
            EXPECT_EQ(S_OK, manager_->Detach(daemonId));
            EXPECT_LT(10, succeeding);
            break;
        }
        EXPECT_TRUE(happened);
        EXPECT_EQ(E_OUTOFMEMORY, hr) << succeeding;
        EXPECT_EQ(kNoId, daemonId) << succeeding;
        EXPECT_TRUE(ComesDownTo(before)) << succeeding;
        EXPECT_EQ(nullptr, openedHere) << succeeding;
        EXPECT_TRUE(TableIsFree()) << succeeding;
    }
}

} // namespace vqrx::test
