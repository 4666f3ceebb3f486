// The supervision thread of a whole manager.
#include "ImportPatch.h"
#include "ManagerFixture.h"

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <new>
#include <thread>

namespace vqrx::test {
namespace {

class DaemonManagerSupervisionTest : public ManagerFixture {};

using CreateProcessFunction = BOOL WINAPI(LPCSTR, LPSTR, LPSECURITY_ATTRIBUTES,
                                          LPSECURITY_ATTRIBUTES, BOOL, DWORD, LPVOID, LPCSTR,
                                          LPSTARTUPINFOA, LPPROCESS_INFORMATION);

HANDLE inCreation = nullptr;
HANDLE mayCreate = nullptr;

BOOL WINAPI BlockInCreation(LPCSTR, LPSTR, LPSECURITY_ATTRIBUTES, LPSECURITY_ATTRIBUTES, BOOL,
                            DWORD, LPVOID, LPCSTR, LPSTARTUPINFOA, LPPROCESS_INFORMATION)
{
    SetEvent(inCreation);
    WaitForSingleObject(mayCreate, 60000);
    return FALSE;
}

std::function<void()> beforeRelease;

// Replaces SignalObjectAndWait in the destructor. Lets the pass end after the destructor has
// signalled the end.
DWORD WINAPI SignalReleaseAndWait(HANDLE toSignal, HANDLE toWaitOn, DWORD milliseconds, BOOL)
{
    SetEvent(toSignal);
    beforeRelease();
    SetEvent(mayCreate);
    return WaitForSingleObject(toWaitOn, milliseconds);
}

std::atomic<int> failures = 0;
BOOL WINAPI ThrowInCreation(LPCSTR, LPSTR, LPSECURITY_ATTRIBUTES, LPSECURITY_ATTRIBUTES, BOOL,
                            DWORD, LPVOID, LPCSTR, LPSTARTUPINFOA, LPPROCESS_INFORMATION)
{
    if (++failures <= 2) {
        throw std::bad_alloc(); // as if an allocation inside the pass had failed
    }
    return FALSE;
}

BOOL WINAPI ThrowForOne(LPCSTR application, LPSTR, LPSECURITY_ATTRIBUTES, LPSECURITY_ATTRIBUTES,
                        BOOL, DWORD, LPVOID, LPCSTR, LPSTARTUPINFOA, LPPROCESS_INFORMATION)
{
    if (std::string(application) == "a.exe") {
        throw std::bad_alloc();
    }
    return FALSE;
}

} // namespace

TEST_F(DaemonManagerSupervisionTest,
       Launched_program_is_started_and_started_again_each_time_it_is_killed)
{
    const ReadyEvent ready;
    Make();
    DWORD processId = 0;
    const DWORD daemonId = LaunchAndWait("no_windows", ready, processId);
    const std::string command = TestProgram("no_windows") + " " + ready.Name();
    EXPECT_EQ(1U, sink_.Count(2, "Start " + Description(daemonId, processId, command)));
    for (std::size_t round = 2; round <= 3; ++round) {
        KillProcess(processId);
        const auto again = sink_.WaitForPrefix("Start ", round);
        processId = PidIn(again.text);
        EXPECT_EQ(1, again.level);
        EXPECT_EQ("Start " + Description(daemonId, processId, command), again.text);
        EXPECT_TRUE(IsRunning(processId));
    }
    EXPECT_EQ(2U, sink_.Count(0, "Exception caught in : Unknown (0x9)"));
}

TEST_F(DaemonManagerSupervisionTest, Missing_program_is_tried_in_every_pass)
{
    Make();
    DWORD daemonId = 0;
    Launch("C:\\missing.exe", {}, &daemonId);
    EXPECT_EQ("Unable to start C:\\missing.exe ", sink_.WaitForPrefix("Unable to start", 5).text);
}

TEST_F(DaemonManagerSupervisionTest,
       Destruction_waits_for_the_running_pass_and_no_further_pass_follows)
{
    const system::win32::v1::UniqueKernelHandle in(CreateEventA(nullptr, TRUE, FALSE, nullptr));
    const system::win32::v1::UniqueKernelHandle may(CreateEventA(nullptr, TRUE, FALSE, nullptr));
    inCreation = in.Get();
    mayCreate = may.Get();
    const ImportPatch patch("CreateProcessA", BlockInCreation);
    Make();
    DWORD daemonId = 0;
    Launch("a.exe", {}, &daemonId);
    ASSERT_EQ(WAIT_OBJECT_0, WaitForSingleObject(in.Get(), 60000));
    beforeRelease = [&] { EXPECT_EQ(0U, sink_.Count(2, "Deamon Thread is exiting...")); };
    const ImportPatch release("SignalObjectAndWait", SignalReleaseAndWait);
    manager_.Reset();
    EXPECT_TRUE(sink_.WaitForText("Deamon Thread is exiting..."));
    const auto texts = sink_.Texts();
    ASSERT_LE(3U, texts.size());
    EXPECT_EQ("Unable to start a.exe ", texts[texts.size() - 3]);
    EXPECT_EQ("1 Processes still registered", texts[texts.size() - 2]);
    EXPECT_EQ(1U, sink_.Count(1, "Unable to start a.exe ")); // no further pass
}

TEST_F(DaemonManagerSupervisionTest, Stop_waits_until_the_running_pass_is_over)
{
    const system::win32::v1::UniqueKernelHandle in(CreateEventA(nullptr, TRUE, FALSE, nullptr));
    const system::win32::v1::UniqueKernelHandle may(CreateEventA(nullptr, TRUE, FALSE, nullptr));
    inCreation = in.Get();
    mayCreate = may.Get();
    const ImportPatch patch("CreateProcessA", BlockInCreation);
    Make();
    DWORD daemonId = 0;
    Launch("a.exe", {}, &daemonId);
    ASSERT_EQ(WAIT_OBJECT_0, WaitForSingleObject(in.Get(), 60000));
    std::atomic<bool> stopped = false;
    std::thread client([&] {
        EXPECT_EQ(S_OK, manager_->Stop(daemonId));
        stopped = true;
    });
    Sleep(100); // a Stop that did not wait would return in this time
    EXPECT_FALSE(stopped);
    SetEvent(may.Get());
    client.join();
    EXPECT_TRUE(stopped);
}

TEST_F(DaemonManagerSupervisionTest,
       Daemon_whose_start_runs_out_of_memory_does_not_keep_the_others_from_being_started)
{
    const ImportPatch patch("CreateProcessA", ThrowForOne);
    Make();
    DWORD daemonId = 0;
    Launch("a.exe", {}, &daemonId);
    Launch("b.exe", {}, &daemonId);
    EXPECT_EQ("Unable to start b.exe ", sink_.WaitForPrefix("Unable to start", 3).text);
    EXPECT_LE(2U, sink_.Count(0, "Exception occured : std::bad_alloc"));
}

TEST_F(DaemonManagerSupervisionTest, Supervision_goes_on_after_a_pass_that_ran_out_of_memory)
{
    failures = 0;
    const ImportPatch patch("CreateProcessA", ThrowInCreation);
    Make();
    DWORD daemonId = 0;
    Launch("a.exe", {}, &daemonId);
    EXPECT_EQ("Unable to start a.exe ", sink_.WaitForPrefix("Unable to start").text);
    EXPECT_EQ(2U, sink_.Count(0, "Exception occured : std::bad_alloc"));
}

} // namespace vqrx::test
