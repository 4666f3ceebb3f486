#include "thread/Thread.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <stdexcept>

namespace vqrx::test {
namespace {

using system::thread::v1::Thread;
using system::win32::v1::UniqueKernelHandle;

UniqueKernelHandle MakeEvent()
{
    return UniqueKernelHandle(CreateEventA(nullptr, TRUE, FALSE, nullptr));
}

bool Wait(HANDLE handle)
{
    return WaitForSingleObject(handle, 60000) == WAIT_OBJECT_0;
}

} // namespace

TEST(Thread, The_body_runs_once_on_a_new_thread)
{
    std::atomic<int> runs = 0;
    std::atomic<DWORD> id = 0;
    const Thread thread([&] {
        id = GetCurrentThreadId();
        ++runs;
    });
    ASSERT_TRUE(Wait(thread.Handle()));
    EXPECT_EQ(1, runs);
    EXPECT_NE(GetCurrentThreadId(), id);
    EXPECT_EQ(thread.Id(), id);
}

TEST(Thread, The_exit_code_is_0_after_the_body_returned)
{
    const Thread thread([] {});
    ASSERT_TRUE(Wait(thread.Handle()));
    DWORD code = 99;
    EXPECT_TRUE(GetExitCodeThread(thread.Handle(), &code));
    EXPECT_EQ(0U, code);
}

TEST(Thread, After_the_body_returned_the_destructor_closes_the_handle_without_waiting)
{
    HANDLE handle = nullptr;
    {
        const Thread thread([] {});
        handle = thread.Handle();
        ASSERT_TRUE(Wait(handle));
    }
    DWORD flags = 0;
    EXPECT_FALSE(GetHandleInformation(handle, &flags));
}

TEST(Thread, The_destructor_does_not_wait_for_a_running_body_and_keeps_it_alive)
{
    const UniqueKernelHandle running = MakeEvent();
    const UniqueKernelHandle mayEnd = MakeEvent();
    const UniqueKernelHandle ended = MakeEvent();
    const auto captured = std::make_shared<int>(42);
    std::atomic<int> seen = 0;
    {
        const Thread thread([&running, &mayEnd, &ended, &seen, captured] {
            SetEvent(running.Get());
            WaitForSingleObject(mayEnd.Get(), 60000);
            seen = *captured; // the copy that the body owns
            SetEvent(ended.Get());
        });
        ASSERT_TRUE(Wait(running.Get()));
    }
    EXPECT_EQ(2, captured.use_count()); // one owner is the body, one this test
    EXPECT_EQ(WAIT_TIMEOUT, WaitForSingleObject(ended.Get(), 0));
    SetEvent(mayEnd.Get());
    ASSERT_TRUE(Wait(ended.Get()));
    EXPECT_EQ(42, seen);
}

TEST(Thread, An_exception_of_the_body_ends_only_its_thread_with_exit_code_1)
{
    const Thread thread([] { throw std::runtime_error("out of the body"); });
    ASSERT_TRUE(Wait(thread.Handle()));
    DWORD code = 99;
    EXPECT_TRUE(GetExitCodeThread(thread.Handle(), &code));
    EXPECT_EQ(1U, code);
}

TEST(Thread, An_empty_body_fails_on_the_new_thread)
{
    const Thread thread{std::function<void()>()};
    ASSERT_TRUE(Wait(thread.Handle()));
    DWORD code = 99;
    EXPECT_TRUE(GetExitCodeThread(thread.Handle(), &code));
    EXPECT_EQ(1U, code);
}

} // namespace vqrx::test
