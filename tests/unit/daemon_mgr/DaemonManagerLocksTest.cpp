// What holds the table lock, and for how long.
#include "AllocationFault.h"
#include "ImportPatch.h"
#include "ManagerFixture.h"
#include "StandInFirewall.h"
#include "TestService.h"
#include "Watched.h"

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace vqrx::test {
namespace {

void(WINAPI* realEnterSection)(CRITICAL_SECTION*) = nullptr;
void(WINAPI* realLeaveSection)(CRITICAL_SECTION*) = nullptr;

enum class Found { kNotTried, kFree, kHeld };

std::atomic<DWORD> prober = 0;                          // the thread whose next entry is looked at
std::atomic<CRITICAL_SECTION*> probedSection = nullptr; // the section that it tried to enter
std::atomic<int> leaves = 0;                            // how often a thread has left that section
Watched<Found>* probeResult = nullptr;

void WINAPI EnterAndTell(CRITICAL_SECTION* section)
{
    DWORD self = GetCurrentThreadId();
    if (!prober.compare_exchange_strong(self, 0)) {
        realEnterSection(section);
        return;
    }
    const bool isFree = TryEnterCriticalSection(section) != FALSE;
    probedSection = section;
    probeResult->Apply([&](Found& found) { found = isFree ? Found::kFree : Found::kHeld; });
    if (!isFree) {
        realEnterSection(section);
    }
}

void WINAPI LeaveAndCount(CRITICAL_SECTION* section)
{
    leaves += section == probedSection ? 1 : 0;
    realLeaveSection(section);
}

class DaemonManagerLocksTest : public ManagerFixture {
protected:
    DaemonManagerLocksTest()
    {
        service_.Start();
        probeResult = &result_;
        probedSection = nullptr;
    }
    ~DaemonManagerLocksTest() override { Join(); }

    /// Starts a request on another thread.
    /// @return whether the request finds the table lock held; it then goes on waiting for the lock
    bool FindsTheTableHeld(std::function<void()> request)
    {
        result_.Apply([](Found& found) { found = Found::kNotTried; });
        requests_.emplace_back([request = std::move(request)] {
            prober = GetCurrentThreadId();
            request();
        });
        EXPECT_TRUE(result_.WaitUntil([](Found found) { return found != Found::kNotTried; }));
        return result_.Get() == Found::kHeld;
    }

    bool TableIsHeld()
    {
        return FindsTheTableHeld([this] { manager_->Detach(4711); });
    }

    /// Waits for the ends of all requests.
    void Join()
    {
        for (std::thread& request : requests_) {
            request.join();
        }
        requests_.clear();
    }

    TestService service_{"MpsSvc"};
    StandInFirewall firewall_;

private:
    const ImportPatch enter_{"EnterCriticalSection", EnterAndTell, realEnterSection};
    const ImportPatch leave_{"LeaveCriticalSection", LeaveAndCount, realLeaveSection};
    Watched<Found> result_{Found::kNotTried};
    std::vector<std::thread> requests_;
};

std::function<void(const std::string&)> duringCreate;

BOOL WINAPI TellAndRefuse(LPCSTR path, LPSTR, LPSECURITY_ATTRIBUTES, LPSECURITY_ATTRIBUTES, BOOL,
                          DWORD, LPVOID, LPCSTR, LPSTARTUPINFOA, LPPROCESS_INFORMATION)
{
    duringCreate(path);
    SetLastError(ERROR_FILE_NOT_FOUND);
    return FALSE;
}

} // namespace

TEST_F(DaemonManagerLocksTest, Launch_asks_the_firewall_under_the_table_lock_and_Stop_without_it)
{
    Make(kNoPasses);
    std::vector<bool> held;
    TheFirewallScript().duringAdd = [&] { held.push_back(TableIsHeld()); };
    TheFirewallScript().duringRemove = [&] { held.push_back(TableIsHeld()); };
    DWORD daemonId = 9;
    EXPECT_EQ(S_OK, Launch("C:\\a.exe", {}, &daemonId));
    Join(); // the first request may hold the lock itself
    EXPECT_EQ(S_OK, manager_->Stop(daemonId));
    EXPECT_EQ((std::vector<bool>{true, false}), held);
}

TEST_F(DaemonManagerLocksTest, Daemon_that_a_failed_Stop_puts_back_gets_its_rule_under_the_lock)
{
    Make();
    int rules = 0;
    bool happened = true;
    for (std::size_t succeeding = 0; happened; ++succeeding) {
        ASSERT_GT(100U, succeeding);
        const ReadyEvent ready;
        DWORD processId = 0;
        const DWORD daemonId = LaunchAndWait("no_windows", ready, processId);
        TheFirewallScript().duringAdd = [&] {
            ++rules;
            EXPECT_TRUE(TableIsHeld());
        };
        {
            const AllocationFault fault(succeeding);
            static_cast<void>(manager_->Stop(daemonId));
            happened = fault.Happened();
        }
        TheFirewallScript().duringAdd = nullptr;
        static_cast<void>(manager_->Stop(daemonId));
        Join();
    }
    EXPECT_LT(0, rules);
}

TEST_F(DaemonManagerLocksTest, Two_launches_of_one_program_at_the_same_time_get_one_id)
{
    Make(kNoPasses);
    DWORD first = 9;
    DWORD second = 8;
    HRESULT secondResult = E_FAIL;
    bool isFirst = true;
    TheFirewallScript().duringAdd = [&] {
        if (std::exchange(isFirst, false) &&
            !FindsTheTableHeld([&] { secondResult = Launch("C:\\a.exe", {"x"}, &second); })) {
            Join(); // The second launch gets its own entry; the expectations below fail.
        }
    };
    EXPECT_EQ(S_OK, Launch("C:\\a.exe", {"x"}, &first));
    Join();
    EXPECT_EQ(S_FALSE, secondResult);
    EXPECT_EQ(first, second);
    EXPECT_EQ(1, TheFirewallScript().adds);
}

TEST_F(DaemonManagerLocksTest, Pass_holds_the_lock_from_its_first_to_its_last_daemon)
{
    Watched<int> passes{0};
    std::atomic<bool> ready = false;
    bool held = false;
    int leavesInPass = -1;
    duringCreate = [&](const std::string& path) {
        if (path == "C:\\first.exe" && ready && passes.Get() == 0) {
            held = TableIsHeld();
            leaves = 0;
        } else if (path == "C:\\last.exe" && probedSection != nullptr && passes.Get() == 0) {
            leavesInPass = leaves;
            passes.Apply([](int& count) { ++count; });
        }
    };
    const ImportPatch patch("CreateProcessA", TellAndRefuse);
    Make();
    DWORD daemonId = 9;
    for (const char* const path : {"C:\\first.exe", "C:\\between.exe", "C:\\last.exe"}) {
        ASSERT_EQ(S_OK, Launch(path, {}, &daemonId));
    }
    ready = true;
    EXPECT_TRUE(passes.WaitUntil([](int count) { return count > 0; }));
    EXPECT_TRUE(held);
    EXPECT_EQ(0, leavesInPass);
    Join();           // the request waits for a lock of the manager
    manager_.Reset(); // no pass is under way when the patch goes
}

} // namespace vqrx::test
