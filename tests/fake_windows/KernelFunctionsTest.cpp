// Behaviour of the Windows functions for events, semaphores, waits, threads and locks that the
// product relies on. Runs natively on the fake and under Wine on the real functions, so both behave
// alike.
#include "win32/UniqueHandle.h"

#include <gtest/gtest.h>

#include <process.h>
#include <windows.h>

#include <array>
#include <atomic>
#include <thread>
#include <vector>

namespace vqrx::test {
namespace {

using system::win32::v1::UniqueKernelHandle;

UniqueKernelHandle Event(bool manualReset, bool signalled = false)
{
    return UniqueKernelHandle(CreateEventA(nullptr, manualReset, signalled, nullptr));
}

UniqueKernelHandle Semaphore(LONG count, LONG maximum)
{
    return UniqueKernelHandle(CreateSemaphoreA(nullptr, count, maximum, nullptr));
}

DWORD Poll(const UniqueKernelHandle& handle)
{
    return WaitForSingleObject(handle.Get(), 0);
}

unsigned __stdcall ExitWith7(void* argument)
{
    static_cast<std::atomic<DWORD>*>(argument)->store(GetCurrentThreadId());
    return 7;
}

unsigned __stdcall WaitForEvent(void* event)
{
    return WaitForSingleObject(event, 60000);
}

UniqueKernelHandle Start(unsigned(__stdcall* entry)(void*), void* argument,
                         unsigned* threadId = nullptr)
{
    return UniqueKernelHandle(
        reinterpret_cast<HANDLE>(_beginthreadex(nullptr, 0, entry, argument, 0, threadId)));
}

} // namespace

TEST(KernelFunctions, An_event_with_automatic_reset_ends_one_wait)
{
    const auto event = Event(false);
    EXPECT_EQ(WAIT_TIMEOUT, Poll(event));
    SetEvent(event.Get());
    SetEvent(event.Get());
    EXPECT_EQ(WAIT_OBJECT_0, Poll(event));
    EXPECT_EQ(WAIT_TIMEOUT, Poll(event));
}

TEST(KernelFunctions, An_event_with_manual_reset_ends_every_wait_until_it_is_reset)
{
    const auto event = Event(true, true);
    EXPECT_EQ(WAIT_OBJECT_0, Poll(event));
    EXPECT_EQ(WAIT_OBJECT_0, Poll(event));
    ResetEvent(event.Get());
    EXPECT_EQ(WAIT_TIMEOUT, Poll(event));
}

TEST(KernelFunctions, A_semaphore_ends_as_many_waits_as_its_count_and_refuses_more_than_its_maximum)
{
    const auto semaphore = Semaphore(1, 3);
    LONG previous = 99;
    EXPECT_TRUE(ReleaseSemaphore(semaphore.Get(), 1, &previous));
    EXPECT_EQ(1, previous);
    EXPECT_FALSE(ReleaseSemaphore(semaphore.Get(), 2, nullptr));
    EXPECT_EQ(ERROR_TOO_MANY_POSTS, GetLastError());
    EXPECT_EQ(WAIT_OBJECT_0, Poll(semaphore));
    EXPECT_EQ(WAIT_OBJECT_0, Poll(semaphore));
    EXPECT_EQ(WAIT_TIMEOUT, Poll(semaphore));
}

TEST(KernelFunctions,
     A_wait_for_several_objects_returns_the_first_signalled_one_and_leaves_the_others)
{
    const auto first = Event(false);
    const auto second = Event(false, true);
    const auto third = Semaphore(1, 1);
    const std::array handles{first.Get(), second.Get(), third.Get()};
    EXPECT_EQ(WAIT_OBJECT_0 + 1, WaitForMultipleObjects(3, handles.data(), FALSE, 0));
    EXPECT_EQ(WAIT_OBJECT_0 + 2, WaitForMultipleObjects(3, handles.data(), FALSE, INFINITE));
    EXPECT_EQ(WAIT_TIMEOUT, WaitForMultipleObjects(3, handles.data(), FALSE, 1));
}

TEST(KernelFunctions, A_signal_ends_a_wait_that_has_begun)
{
    const auto never = Event(false);
    const auto event = Event(false);
    const auto begun = Event(false);
    DWORD result = WAIT_FAILED;
    std::thread waiting([&] {
        const std::array handles{never.Get(), event.Get()};
        SetEvent(begun.Get());
        result = WaitForMultipleObjects(2, handles.data(), FALSE, INFINITE);
    });
    WaitForSingleObject(begun.Get(), INFINITE);
    SetEvent(event.Get());
    waiting.join();
    EXPECT_EQ(WAIT_OBJECT_0 + 1, result);
}

TEST(KernelFunctions, A_signal_to_an_event_with_automatic_reset_releases_one_waiting_thread)
{
    const auto event = Event(false);
    const auto counted = Semaphore(0, 100);
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread) {
        threads.emplace_back([&] {
            WaitForSingleObject(event.Get(), INFINITE);
            ReleaseSemaphore(counted.Get(), 1, nullptr);
        });
    }
    for (int released = 0; released < 4; ++released) {
        SetEvent(event.Get());
        EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(counted.Get(), INFINITE));
        EXPECT_EQ(WAIT_TIMEOUT, Poll(counted));
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

TEST(KernelFunctions, A_wait_lasts_at_least_as_long_as_its_time_out)
{
    const auto event = Event(false);
    const DWORD before = GetTickCount();
    EXPECT_EQ(WAIT_TIMEOUT, WaitForSingleObject(event.Get(), 50));
    // GetTickCount advances in coarser steps than the wait.
    EXPECT_LE(49U, GetTickCount() - before);
}

TEST(KernelFunctions, A_wait_for_null_or_for_a_closed_handle_fails)
{
    EXPECT_EQ(WAIT_FAILED, WaitForSingleObject(nullptr, 0));
    EXPECT_EQ(ERROR_INVALID_HANDLE, GetLastError());
    HANDLE closed = nullptr;
    {
        const auto event = Event(true, true);
        closed = event.Get();
    }
    EXPECT_EQ(WAIT_FAILED, WaitForSingleObject(closed, 0));
    EXPECT_FALSE(SetEvent(closed));
    EXPECT_FALSE(CloseHandle(closed));
    EXPECT_EQ(ERROR_INVALID_HANDLE, GetLastError());
    const auto event = Event(true, true);
    const std::array handles{event.Get(), HANDLE{nullptr}};
    EXPECT_EQ(WAIT_FAILED, WaitForMultipleObjects(2, handles.data(), FALSE, 0));
}

TEST(KernelFunctions, SignalObjectAndWait_first_signals_and_then_waits)
{
    const auto event = Event(false);
    const auto thread = Start(WaitForEvent, event.Get());
    EXPECT_EQ(WAIT_OBJECT_0, SignalObjectAndWait(event.Get(), thread.Get(), INFINITE, FALSE));
    DWORD code = 99;
    EXPECT_TRUE(GetExitCodeThread(thread.Get(), &code));
    EXPECT_EQ(WAIT_OBJECT_0, code);
    EXPECT_EQ(WAIT_FAILED, SignalObjectAndWait(nullptr, thread.Get(), 0, FALSE));
}

TEST(KernelFunctions, A_thread_is_still_active_until_it_ends_with_its_exit_code)
{
    const auto event = Event(false);
    const auto waiting = Start(WaitForEvent, event.Get());
    DWORD code = 0;
    EXPECT_TRUE(GetExitCodeThread(waiting.Get(), &code));
    EXPECT_EQ(STILL_ACTIVE, code);
    EXPECT_EQ(WAIT_TIMEOUT, Poll(waiting));
    SetEvent(event.Get());
    EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(waiting.Get(), INFINITE));

    std::atomic<DWORD> id = 0;
    unsigned reportedId = 0;
    const auto ending = Start(ExitWith7, &id, &reportedId);
    EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(ending.Get(), INFINITE));
    EXPECT_TRUE(GetExitCodeThread(ending.Get(), &code));
    EXPECT_EQ(7U, code);
    EXPECT_EQ(reportedId, id);
    EXPECT_NE(GetCurrentThreadId(), reportedId);
}

TEST(KernelFunctions, Only_the_owner_enters_a_critical_section_again)
{
    CRITICAL_SECTION section;
    ASSERT_TRUE(InitializeCriticalSectionAndSpinCount(&section, 0));
    const auto othersMayEnter = [&] {
        bool entered = false;
        std::thread([&] {
            entered = TryEnterCriticalSection(&section) != FALSE;
            if (entered) {
                LeaveCriticalSection(&section);
            }
        }).join();
        return entered;
    };
    EnterCriticalSection(&section);
    EXPECT_TRUE(TryEnterCriticalSection(&section));
    LeaveCriticalSection(&section);
    EXPECT_FALSE(othersMayEnter());
    LeaveCriticalSection(&section);
    EXPECT_TRUE(othersMayEnter());
    DeleteCriticalSection(&section);
}

TEST(KernelFunctions, Each_thread_has_its_own_last_error)
{
    const auto mayBegin = Event(false);
    const auto done = Event(false);
    std::thread other([&] {
        WaitForSingleObject(mayBegin.Get(), INFINITE);
        SetLastError(22);
        SetEvent(done.Get());
    });
    SetLastError(11);
    SetEvent(mayBegin.Get());
    WaitForSingleObject(done.Get(), INFINITE);
    EXPECT_EQ(11U, GetLastError());
    other.join();
}

} // namespace vqrx::test
