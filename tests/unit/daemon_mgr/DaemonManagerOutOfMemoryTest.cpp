// Requests whose allocations fail one after the other: the request fails, leaks nothing and leaves
// the table unlocked.
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

/// Counts how often one line, the mark, is written. Keeps no record. A test stops the writes while
/// it owns `held`. The mark is too long for std::string's own buffer, so every record of the logger
/// that carried it owns memory that later lines use.
class MarkSink : public log::log_perf::v2::ILogSink {
public:
    static constexpr const char* kMark = "a mark after all that was logged before";

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

/// A manager that makes no passes, with a logger whose sink keeps nothing: the number of live
/// allocations changes only if a failed call leaks.
class DaemonManagerOutOfMemoryTest : public ::testing::Test {
protected:
    static constexpr int kAtMost = 300; // allocations of one call

    DaemonManagerOutOfMemoryTest()
    {
        service_.Start();
        manager_ = system::com::v1::ComPtr<system::daemon::daemon_mgr::v0::DaemonManager>::Share(
            new system::daemon::daemon_mgr::v0::DaemonManager(GetCurrentThreadId(), INFINITE,
                                                              &logger_));
        logger_.AddSink(&sink_);
        FillLogger();
    }

    /// The logger reuses the memory of written records for later records. This gives the logger
    /// more such records than one call needs, so that no later line makes it keep more memory.
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
        LogMark(); // when this mark is written, the records before it can be reused
    }

    void LogMark()
    {
        const int before = sink_.Marks();
        logger_.Log(0, "%s", MarkSink::kMark);
        while (sink_.Marks() == before) {
            Sleep(1);
        }
    }

    /// The number of live allocations, without those that the logger's worker holds for an instant.
    static std::ptrdiff_t Live()
    {
        auto& notes = TheFirewallScript().askedFor; // the stand-in's own notes do not count
        notes.clear();
        notes.shrink_to_fit();
        std::ptrdiff_t least = LiveAllocations();
        for (int sample = 0; sample < 4; ++sample) {
            Sleep(1);
            least = std::min(least, LiveAllocations());
        }
        return least;
    }

    /// Whether the number of live allocations returns to `before` within 10 s.
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

    /// Whether another thread can take the table lock.
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

TEST_F(DaemonManagerOutOfMemoryTest,
       Launch_that_fails_at_any_allocation_leaks_nothing_and_uses_up_no_id)
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
        if (hr == S_OK) { // an allocation for the rule or the log failed, or none
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
thread_local HANDLE openedHere = nullptr; // opened by this thread and not yet closed

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

TEST_F(DaemonManagerOutOfMemoryTest,
       Attach_that_fails_at_any_allocation_leaks_nothing_and_closes_the_process)
{
    const ImportPatch open("OpenProcess", OpenAndNote, realOpen);
    const ImportPatch close("CloseHandle", CloseAndNote, realCloseHandle);
    {
        // The first conversion of a number makes the C++ library allocate memory that it keeps.
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
            // Every attempt used up an id, and so did the attach above.
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
