#include "AllocationFault.h"
#include "ManagerFixture.h"

#include <gtest/gtest.h>

#include <set>
#include <thread>

namespace vqrx::test {
namespace {

using system::com::v1::UniqueBstr;
using system::daemon::daemon_mgr::v0::kNoId;

class DaemonManagerLaunchTest : public ManagerFixture {};

} // namespace

TEST_F(DaemonManagerLaunchTest, Launch_of_the_same_program_and_arguments_returns_the_first_id)
{
    Make(kNoPasses);
    DWORD first = 9;
    DWORD second = 9;
    EXPECT_EQ(S_OK, Launch("a.exe", {"x", "y"}, &first));
    EXPECT_EQ(S_FALSE, Launch("a.exe", {"x", "y"}, &second));
    EXPECT_EQ(0U, first);
    EXPECT_EQ(0U, second);
}

TEST_F(DaemonManagerLaunchTest,
       Launch_with_other_arguments_another_order_or_other_letter_case_makes_a_new_daemon)
{
    Make(kNoPasses);
    DWORD daemonId = 9;
    EXPECT_EQ(S_OK, Launch("a.exe", {"x", "y"}, &daemonId));
    EXPECT_EQ(S_OK, Launch("a.exe", {"y", "x"}, &daemonId));
    EXPECT_EQ(1U, daemonId);
    EXPECT_EQ(S_OK, Launch("a.exe", {"x"}, &daemonId));
    EXPECT_EQ(2U, daemonId);
    EXPECT_EQ(S_OK, Launch("A.exe", {"x", "y"}, &daemonId));
    EXPECT_EQ(3U, daemonId);
}

TEST_F(DaemonManagerLaunchTest, Launch_with_a_null_array_pointer_has_no_arguments)
{
    Make(kNoPasses);
    DWORD daemonId = 9;
    const UniqueBstr path(L"a.exe");
    EXPECT_EQ(S_OK, manager_->Launch(path.Get(), nullptr, &daemonId));
    EXPECT_EQ(S_FALSE, Launch("a.exe", {}, &daemonId));
    EXPECT_EQ(0U, daemonId);
}

TEST_F(DaemonManagerLaunchTest, Launch_and_Attach_refuse_null_pointers_and_use_up_no_id)
{
    Make(kNoPasses);
    DWORD daemonId = 7;
    Arguments none({});
    const UniqueBstr path(L"a.exe");
    EXPECT_EQ(E_POINTER, manager_->Launch(nullptr, none.Put(), &daemonId));
    EXPECT_EQ(kNoId, daemonId);
    EXPECT_EQ(E_POINTER, manager_->Launch(path.Get(), none.Put(), nullptr));
    EXPECT_EQ(E_POINTER, manager_->Attach(GetCurrentProcessId(), none.Put(), nullptr));
    EXPECT_EQ(S_OK, Launch("a.exe", {}, &daemonId));
    EXPECT_EQ(0U, daemonId);
}

TEST_F(DaemonManagerLaunchTest, Launch_with_an_array_of_lower_bound_1_fails_and_uses_up_no_id)
{
    Make(kNoPasses);
    DWORD daemonId = 9;
    const UniqueBstr path(L"a.exe");
    Arguments shifted({"x"}, 1);
    EXPECT_EQ(E_INVALIDARG, manager_->Launch(path.Get(), shifted.Put(), &daemonId));
    EXPECT_EQ(nullptr, shifted.Get());
    EXPECT_EQ(kNoId, daemonId);
    EXPECT_EQ(S_OK, Launch("a.exe", {}, &daemonId));
    EXPECT_EQ(0U, daemonId);
}

TEST_F(DaemonManagerLaunchTest, Id_of_a_stopped_daemon_is_not_given_again)
{
    Make(kNoPasses);
    DWORD daemonId = 0;
    Launch("a.exe", {}, &daemonId);
    manager_->Stop(daemonId);
    Launch("a.exe", {}, &daemonId);
    EXPECT_EQ(1U, daemonId);
}

TEST_F(DaemonManagerLaunchTest, Concurrent_callers_get_different_ids)
{
    Make(kNoPasses);
    constexpr int threads = 8;
    constexpr int calls = 50;
    std::vector<std::vector<DWORD>> ids(threads);
    std::vector<std::thread> clients;
    for (int thread = 0; thread < threads; ++thread) {
        clients.emplace_back([&, thread] {
            for (int call = 0; call < calls; ++call) {
                DWORD daemonId = kNoId;
                if (call % 2 == 0) {
                    Launch("a.exe", {std::to_string(thread), std::to_string(call)}, &daemonId);
                    ids[static_cast<std::size_t>(thread)].push_back(daemonId);
                } else {
                    manager_->Attach(0, nullptr, &daemonId);
                }
            }
        });
    }
    for (auto& client : clients) {
        client.join();
    }
    std::set<DWORD> distinct;
    for (const auto& list : ids) {
        distinct.insert(list.begin(), list.end());
    }
    EXPECT_EQ(static_cast<std::size_t>(threads * calls / 2), distinct.size());
    DWORD next = 0;
    Launch("b.exe", {}, &next);
    EXPECT_EQ(static_cast<DWORD>(threads * calls), next);
}

TEST_F(DaemonManagerLaunchTest, Launch_and_Stop_succeed_without_a_firewall)
{
    Make(kNoPasses);
    DWORD daemonId = 0;
    EXPECT_EQ(S_OK, Launch("C:\\a.exe", {}, &daemonId));
    EXPECT_EQ(S_OK, manager_->Stop(daemonId));
}

TEST_F(DaemonManagerLaunchTest, Launch_that_runs_out_of_memory_registers_nothing_and_uses_up_no_id)
{
    Make(kNoPasses);
    const UniqueBstr path(L"C:\\a folder with a long name\\a.exe");
    Arguments arguments({"the first argument, too long for a string's own buffer", "second"});
    DWORD expected = 0;
    std::size_t failures = 0;
    bool happened = true;
    for (std::size_t succeeding = 0; happened; ++succeeding) {
        DWORD daemonId = 9;
        HRESULT hr = S_OK;
        {
            const AllocationFault fault(succeeding);
            hr = manager_->Launch(path.Get(), arguments.Put(), &daemonId);
            happened = fault.Happened();
        }
        if (hr != S_OK) {
            EXPECT_EQ(E_OUTOFMEMORY, hr) << succeeding;
            EXPECT_EQ(kNoId, daemonId) << succeeding;
            ++failures;
            // A failure after the array was locked destroys the array: make a new one.
            if (arguments.Get() == nullptr) {
                *arguments.Put() = Arguments({"the first argument, too long for a string's own "
                                              "buffer",
                                              "second"})
                                       .Release();
            }
        } else { // the failed allocation was one of the logger
            EXPECT_EQ(expected, daemonId) << succeeding;
            EXPECT_EQ(S_OK, manager_->Stop(daemonId)) << succeeding;
            ++expected;
        }
        ASSERT_GT(100U, succeeding);
    }
    EXPECT_LT(3U, failures);
}

} // namespace vqrx::test
