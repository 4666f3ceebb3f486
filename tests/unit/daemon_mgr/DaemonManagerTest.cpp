#include "DaemonManager.h"

#include "ImportPatch.h"
#include "ManagerFixture.h"

#include <gtest/gtest.h>

#include <oaidl.h>

#include <process.h>

#include <atomic>
#include <stdexcept>
#include <thread>

namespace vqrx::test {
namespace {

using system::com::v1::ComPtr;

class DaemonManagerTest : public ManagerFixture {
protected:
    // Makes a manager whose last Release on another thread sets released_.
    void MakeWithReleasedEvent()
    {
        ManagerOptions options;
        options.releasedEvent = released_.Get();
        Make(kNoPasses, options);
    }

    const system::win32::v1::UniqueKernelHandle released_{
        CreateEventA(nullptr, TRUE, FALSE, nullptr)};
};

bool TakeQuitMessage()
{
    MSG message{};
    return PeekMessageA(&message, nullptr, WM_QUIT, WM_QUIT, PM_REMOVE) != FALSE;
}

} // namespace

TEST_F(DaemonManagerTest,
       QueryInterface_gives_one_counted_pointer_for_IUnknown_and_for_its_own_interface)
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

TEST_F(DaemonManagerTest, Interface_id_has_the_bytes_that_clients_know)
{
    const unsigned char expected[16] = {0xF6, 0xE9, 0x07, 0xC3, 0xC0, 0x67, 0x74, 0x4C,
                                        0xB1, 0xBD, 0x37, 0xEF, 0xB9, 0x88, 0x27, 0x01};
    EXPECT_EQ(0, memcmp(expected, &IID_IDaemonMgrControl, 16));
}

TEST_F(DaemonManagerTest, QueryInterface_for_another_interface_fails_and_sets_the_pointer_to_null)
{
    Make(kNoPasses);
    void* object = this;
    EXPECT_EQ(E_NOINTERFACE, manager_->QueryInterface(IID_IDispatch, &object));
    EXPECT_EQ(nullptr, object);
}

TEST_F(DaemonManagerTest, QueryInterface_refuses_a_null_out_pointer_and_counts_no_reference)
{
    Make(kNoPasses);
    EXPECT_EQ(E_POINTER, manager_->QueryInterface(IID_IUnknown, nullptr));
    EXPECT_EQ(2U, manager_->AddRef()); // QueryInterface added no reference
    EXPECT_EQ(1U, manager_->Release());
}

TEST_F(DaemonManagerTest, Exit_logs_a_line_and_posts_the_quit_message_at_every_call)
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

TEST_F(DaemonManagerTest,
       Last_Release_on_another_thread_sets_the_event_and_leaves_the_object_to_its_maker)
{
    MakeWithReleasedEvent();
    DaemonManager* const manager = manager_.Get();
    ComPtr<DaemonManager> client = manager_;
    manager_.Reset();
    EXPECT_EQ(WAIT_TIMEOUT, WaitForSingleObject(released_.Get(), 0));
    std::thread([&client] { client.Reset(); }).join();
    EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(released_.Get(), 0));
    EXPECT_EQ(0U, sink_.Count(2, "Deamon Thread is exiting..."));
    manager->Destroy();
    EXPECT_TRUE(sink_.WaitForText("Deamon Thread is exiting..."));
}

TEST_F(DaemonManagerTest, Last_Release_on_the_makers_thread_deletes_the_object_without_the_event)
{
    MakeWithReleasedEvent();
    manager_.Reset();
    EXPECT_TRUE(sink_.WaitForText("Deamon Thread is exiting..."));
    EXPECT_EQ(WAIT_TIMEOUT, WaitForSingleObject(released_.Get(), 0));
}

TEST_F(DaemonManagerTest, Destruction_with_an_empty_table_logs_only_the_end_of_the_thread)
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

TEST_F(DaemonManagerTest,
       Destruction_with_three_daemons_logs_their_number_and_leaves_their_processes_running)
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

TEST_F(DaemonManagerTest, Constructor_throws_if_the_supervision_thread_cannot_be_made)
{
    static const auto refuse = +[](void*, unsigned, _beginthreadex_proc_type, void*, unsigned,
                                   unsigned*) -> uintptr_t { return 0; };
    const ImportPatch patch("_beginthreadex", refuse);
    try {
        Make();
        FAIL();
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ("Could not create supervision thread", error.what());
    }
}

TEST_F(DaemonManagerTest, Without_a_stop_event_the_supervision_thread_runs_passes_and_still_ends)
{
    using CreateEventFunction = HANDLE WINAPI(LPSECURITY_ATTRIBUTES, BOOL, BOOL, LPCSTR);
    static CreateEventFunction* const real = reinterpret_cast<CreateEventFunction*>(
        reinterpret_cast<void*>(GetProcAddress(GetModuleHandleA("kernel32"), "CreateEventA")));
    // The first event of this thread is the stop event. Later ones and those of other threads may
    // belong to a std::mutex of the test, which could not wait without them.
    static std::atomic<DWORD> refusedThread = 0;
    static const auto refuseOnce =
        +[](LPSECURITY_ATTRIBUTES security, BOOL isManual, BOOL isSet, LPCSTR name) -> HANDLE {
        DWORD self = GetCurrentThreadId();
        return refusedThread.compare_exchange_strong(self, 0)
                   ? nullptr
                   : real(security, isManual, isSet, name);
    };
    {
        const ImportPatch patch("CreateEventA", refuseOnce);
        refusedThread = GetCurrentThreadId();
        Make();
    }
    EXPECT_EQ(0U, refusedThread);
    DWORD daemonId = 0;
    Launch("C:\\missing.exe", {}, &daemonId);
    EXPECT_EQ("Unable to start C:\\missing.exe ", sink_.WaitForPrefix("Unable to start").text);
    manager_.Reset();
    EXPECT_TRUE(sink_.WaitForText("Deamon Thread is exiting..."));
}

} // namespace vqrx::test
