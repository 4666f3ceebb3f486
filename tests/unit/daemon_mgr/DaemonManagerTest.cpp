#include "DaemonManager.h"

#include "AllocationFault.h"
#include "ImportPatch.h"
#include "ManagerFixture.h"

#include <gtest/gtest.h>

#include <oaidl.h>

#include <set>
#include <thread>

namespace vqrx::test {
namespace {

using system::com::v1::ComPtr;
using system::com::v1::UniqueBstr;
using system::daemon::daemon_mgr::v0::kNoId;

class Manager : public ManagerFixture {};

bool TakeQuitMessage()
{
    MSG message{};
    return PeekMessageA(&message, nullptr, WM_QUIT, WM_QUIT, PM_REMOVE) != FALSE;
}

} // namespace

TEST_F(Manager, answers_for_iunknown_and_its_interface_with_the_same_counted_pointer)
{
    Make(kNoPasses);
    void* unknown = nullptr;
    void* control = nullptr;
    EXPECT_EQ(S_OK, manager_->QueryInterface(IID_IUnknown, &unknown));
    EXPECT_EQ(S_OK, manager_->QueryInterface(IID_IDaemonMgrControl, &control));
    EXPECT_EQ(unknown, control);
    EXPECT_EQ(2U, manager_->Release());
    EXPECT_EQ(1U, manager_->Release());
}

TEST_F(Manager, has_the_interface_id_that_clients_know_byte_for_byte)
{
    const unsigned char expected[16] = {0xF6, 0xE9, 0x07, 0xC3, 0xC0, 0x67, 0x74, 0x4C,
                                        0xB1, 0xBD, 0x37, 0xEF, 0xB9, 0x88, 0x27, 0x01};
    EXPECT_EQ(0, memcmp(expected, &IID_IDaemonMgrControl, 16));
}

TEST_F(Manager, has_no_other_interface_and_sets_the_pointer_to_null)
{
    Make(kNoPasses);
    void* object = this;
    EXPECT_EQ(E_NOINTERFACE, manager_->QueryInterface(IID_IDispatch, &object));
    EXPECT_EQ(nullptr, object);
}

TEST_F(Manager, refuses_to_put_its_pointer_nowhere)
{
    Make(kNoPasses);
    EXPECT_EQ(E_POINTER, manager_->QueryInterface(IID_IUnknown, nullptr));
    EXPECT_EQ(2U, manager_->AddRef()); // nobody has been counted
    EXPECT_EQ(1U, manager_->Release());
}

TEST_F(Manager, exit_logs_and_posts_the_quit_message_every_time_it_is_called)
{
    Make(kNoPasses);
    MSG message{};
    PeekMessageA(&message, nullptr, WM_USER, WM_USER, PM_NOREMOVE); // makes the message queue
    std::thread client([this] {
        EXPECT_EQ(S_OK, manager_->Exit());
        EXPECT_EQ(S_OK, manager_->Exit());
    });
    client.join();
    EXPECT_TRUE(TakeQuitMessage());
    EXPECT_TRUE(TakeQuitMessage());
    EXPECT_FALSE(TakeQuitMessage());
    sink_.WaitForPrefix("Exit", 2);
    EXPECT_EQ(2U, sink_.Count(2, "Exit"));
}

TEST_F(Manager, leaves_its_end_to_its_maker_when_the_last_reference_goes_on_another_thread)
{
    const system::win32::v1::UniqueKernelHandle released(
        CreateEventA(nullptr, TRUE, FALSE, nullptr));
    ManagerOptions options;
    options.releasedEvent = released.Get();
    Make(kNoPasses, options);
    DaemonManager* const manager = manager_.Get();
    ComPtr<DaemonManager> client = manager_;
    manager_.Reset();
    EXPECT_EQ(WAIT_TIMEOUT, WaitForSingleObject(released.Get(), 0));
    std::thread([&client] { client.Reset(); }).join();
    EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(released.Get(), 0));
    EXPECT_EQ(0U, sink_.Count(2, "Deamon Thread is exiting..."));
    manager->Destroy();
    EXPECT_TRUE(sink_.WaitForText("Deamon Thread is exiting..."));
}

TEST_F(Manager, deletes_itself_when_the_last_reference_goes_on_its_makers_thread)
{
    const system::win32::v1::UniqueKernelHandle released(
        CreateEventA(nullptr, TRUE, FALSE, nullptr));
    ManagerOptions options;
    options.releasedEvent = released.Get();
    Make(kNoPasses, options);
    manager_.Reset();
    EXPECT_TRUE(sink_.WaitForText("Deamon Thread is exiting..."));
    EXPECT_EQ(WAIT_TIMEOUT, WaitForSingleObject(released.Get(), 0));
}

TEST_F(Manager, refuses_a_null_path_or_id_pointer_and_uses_no_id_for_it)
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

TEST_F(Manager, launch_of_the_same_program_and_arguments_returns_the_first_id)
{
    Make(kNoPasses);
    DWORD first = 9;
    DWORD second = 9;
    EXPECT_EQ(S_OK, Launch("a.exe", {"x", "y"}, &first));
    EXPECT_EQ(S_FALSE, Launch("a.exe", {"x", "y"}, &second));
    EXPECT_EQ(0U, first);
    EXPECT_EQ(0U, second);
}

TEST_F(Manager, launch_with_other_arguments_order_or_letter_case_makes_a_second_record)
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

TEST_F(Manager, launch_takes_a_null_array_pointer_as_no_arguments)
{
    Make(kNoPasses);
    DWORD daemonId = 9;
    const UniqueBstr path(L"a.exe");
    EXPECT_EQ(S_OK, manager_->Launch(path.Get(), nullptr, &daemonId));
    EXPECT_EQ(S_FALSE, Launch("a.exe", {}, &daemonId));
    EXPECT_EQ(0U, daemonId);
}

TEST_F(Manager, launch_with_a_bad_array_fails_and_uses_no_id)
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

TEST_F(Manager, attach_with_a_bad_array_fails_and_has_used_an_id)
{
    Make(kNoPasses);
    DWORD daemonId = 9;
    Arguments shifted({"x"}, 1);
    EXPECT_EQ(E_INVALIDARG, manager_->Attach(GetCurrentProcessId(), shifted.Put(), &daemonId));
    EXPECT_EQ(S_OK, Launch("a.exe", {}, &daemonId));
    EXPECT_EQ(1U, daemonId);
}

TEST_F(Manager, attach_of_a_process_that_is_not_there_says_so_and_has_used_an_id)
{
    Make(kNoPasses);
    DWORD daemonId = 9;
    Arguments arguments({"x"});
    EXPECT_EQ(S_FALSE, manager_->Attach(0xFFFFFFF0U, arguments.Put(), &daemonId));
    EXPECT_EQ(kNoId, daemonId);
    EXPECT_EQ("Unable to attach DaemonId(0) PId(4294967280) :  x ",
              sink_.WaitForPrefix("Unable").text);
    EXPECT_EQ(1U, sink_.Count(1, "Unable to attach DaemonId(0) PId(4294967280) :  x "));
    EXPECT_EQ(S_OK, Launch("a.exe", {}, &daemonId));
    EXPECT_EQ(1U, daemonId);
}

TEST_F(Manager, attach_of_process_id_0_is_answered_with_nothing_done)
{
    Make(kNoPasses);
    DWORD daemonId = 9;
    EXPECT_EQ(S_FALSE, manager_->Attach(0, nullptr, &daemonId));
    sink_.WaitForPrefix("Unable to attach ");
    EXPECT_EQ(1U, sink_.Count(1, "Unable to attach  "));
}

TEST_F(Manager, stop_and_detach_of_an_unknown_id_do_nothing)
{
    Make(kNoPasses);
    EXPECT_EQ(S_FALSE, manager_->Stop(0));
    EXPECT_EQ(S_FALSE, manager_->Detach(0));
    EXPECT_EQ(S_FALSE, manager_->Stop(kNoId));
}

TEST_F(Manager, stop_of_a_daemon_that_never_ran_succeeds_and_removes_it)
{
    Make(kNoPasses);
    DWORD daemonId = 0;
    Launch("a.exe", {}, &daemonId);
    EXPECT_EQ(S_OK, manager_->Stop(daemonId));
    EXPECT_EQ(S_FALSE, manager_->Stop(daemonId));
}

TEST_F(Manager, never_gives_an_id_again)
{
    Make(kNoPasses);
    DWORD daemonId = 0;
    Launch("a.exe", {}, &daemonId);
    manager_->Stop(daemonId);
    Launch("a.exe", {}, &daemonId);
    EXPECT_EQ(1U, daemonId);
}

TEST_F(Manager, gives_every_caller_an_id_of_its_own_when_they_come_at_once)
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

TEST_F(Manager, detach_of_a_launched_daemon_is_refused_without_a_line_and_leaves_it_supervised)
{
    const ReadyEvent ready;
    Make();
    DWORD processId = 0;
    const DWORD daemonId = LaunchAndWait("no_windows", ready, processId);
    EXPECT_EQ(S_FALSE, manager_->Detach(daemonId));
    KillProcess(processId);
    EXPECT_NE(0U, PidIn(sink_.WaitForPrefix("Start ", 2).text));
    for (const auto& record : sink_.Records()) {
        EXPECT_NE(0U, record.text.rfind("Detached", 0));
    }
}

TEST_F(Manager, stop_ends_the_process_and_it_stays_ended)
{
    const ReadyEvent ready;
    Make();
    DWORD processId = 0;
    const DWORD daemonId = LaunchAndWait("no_windows", ready, processId);
    EXPECT_EQ(S_OK, manager_->Stop(daemonId));
    EXPECT_FALSE(IsRunning(processId));
    const std::string text =
        "Stop (2) " +
        Description(daemonId, processId, TestProgram("no_windows") + " " + ready.Name());
    EXPECT_TRUE(sink_.WaitForText(text));
    EXPECT_EQ(1U, sink_.Count(1, text));
    // A missing program makes its line at every pass: two of them, and a pass has been over the
    // table.
    DWORD missing = 0;
    Launch("C:\\missing.exe", {}, &missing);
    sink_.WaitForPrefix("Unable to start", 2);
    std::size_t starts = 0;
    for (const std::string& line : sink_.Texts()) {
        starts += line.starts_with("Start ") ? 1 : 0;
    }
    EXPECT_EQ(1U, starts);
}

TEST_F(Manager, launch_that_runs_out_of_memory_registers_nothing_and_uses_no_id)
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
            // The array that was being read is gone, as for every failure behind its lock.
            if (arguments.Get() == nullptr) {
                *arguments.Put() = Arguments({"the first argument, too long for a string's own "
                                              "buffer",
                                              "second"})
                                       .Release();
            }
        } else { // what failed was a line of the log
            EXPECT_EQ(expected, daemonId) << succeeding;
            EXPECT_EQ(S_OK, manager_->Stop(daemonId)) << succeeding;
            ++expected;
        }
        ASSERT_GT(100U, succeeding);
    }
    EXPECT_LT(3U, failures);
}

TEST_F(Manager, stop_that_runs_out_of_memory_leaves_the_daemon_running_and_registered)
{
    Make();
    bool happened = true;
    for (std::size_t succeeding = 0; happened; ++succeeding) {
        const ReadyEvent ready;
        DWORD processId = 0;
        const DWORD daemonId = LaunchAndWait("no_windows", ready, processId);
        HRESULT hr = S_OK;
        {
            const AllocationFault fault(succeeding);
            hr = manager_->Stop(daemonId);
            happened = fault.Happened();
        }
        if (hr == S_OK) { // what failed was a line of the log
            EXPECT_FALSE(IsRunning(processId)) << succeeding;
            EXPECT_EQ(S_FALSE, manager_->Stop(daemonId)) << succeeding;
        } else {
            EXPECT_EQ(E_OUTOFMEMORY, hr) << succeeding;
            EXPECT_TRUE(IsRunning(processId)) << succeeding;
            EXPECT_EQ(S_OK, manager_->Stop(daemonId)) << succeeding;
        }
        ASSERT_GT(100U, succeeding);
    }
}

TEST_F(Manager, destroyed_with_an_empty_table_logs_only_that_its_thread_ends)
{
    Make();
    manager_.Reset();
    EXPECT_TRUE(sink_.WaitForText("Deamon Thread is exiting..."));
    EXPECT_EQ(1U, sink_.Count(2, "Deamon Thread started"));
    EXPECT_EQ(1U, sink_.Count(2, "Deamon Thread is exiting..."));
    for (const auto& record : sink_.Records()) {
        EXPECT_EQ(std::string::npos, record.text.find("still registered"));
    }
}

TEST_F(Manager, destroyed_with_three_daemons_says_so_and_leaves_them_running)
{
    const ReadyEvent ready[3];
    DWORD processIds[3] = {};
    Make();
    for (int index = 0; index < 3; ++index) {
        LaunchAndWait("no_windows", ready[index], processIds[index]);
    }
    manager_.Reset();
    EXPECT_TRUE(sink_.WaitForText("Deamon Thread is exiting..."));
    EXPECT_EQ(1U, sink_.Count(1, "3 Processes still registered"));
    const auto texts = sink_.Texts();
    EXPECT_EQ("3 Processes still registered", texts.at(texts.size() - 2));
    for (const DWORD processId : processIds) {
        EXPECT_TRUE(IsRunning(processId));
    }
}

TEST_F(Manager, works_without_a_stop_event_and_still_ends)
{
    using CreateEventFunction = HANDLE WINAPI(LPSECURITY_ATTRIBUTES, BOOL, BOOL, LPCSTR);
    static CreateEventFunction* const refuse =
        +[](LPSECURITY_ATTRIBUTES, BOOL, BOOL, LPCSTR) -> HANDLE { return nullptr; };
    {
        const ImportPatch patch("CreateEventA", refuse);
        Make();
    }
    DWORD daemonId = 0;
    Launch("C:\\missing.exe", {}, &daemonId);
    EXPECT_EQ("Unable to start C:\\missing.exe ", sink_.WaitForPrefix("Unable to start").text);
    manager_.Reset();
    EXPECT_TRUE(sink_.WaitForText("Deamon Thread is exiting..."));
}

TEST_F(Manager, registers_a_daemon_also_while_there_is_no_firewall)
{
    Make(kNoPasses);
    DWORD daemonId = 0;
    EXPECT_EQ(S_OK, Launch("C:\\a.exe", {}, &daemonId));
    EXPECT_EQ(S_OK, manager_->Stop(daemonId));
}

} // namespace vqrx::test
