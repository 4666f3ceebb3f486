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

TEST(Thread, runs_its_body_once_on_a_thread_of_its_own)
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

TEST(Thread, that_has_ended_has_exit_code_0)
{
    const Thread thread([] {});
    ASSERT_TRUE(Wait(thread.Handle()));
    DWORD code = 99;
    EXPECT_TRUE(GetExitCodeThread(thread.Handle(), &code));
    EXPECT_EQ(0U, code);
}

TEST(Thread, destroyed_after_its_body_returned_closes_the_handle_without_waiting)
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

TEST(Thread, destroyed_while_its_body_runs_returns_at_once_and_the_callable_lives_on)
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
            seen = *captured; // the callable's own copy
            SetEvent(ended.Get());
        });
        ASSERT_TRUE(Wait(running.Get()));
    }
    EXPECT_EQ(2, captured.use_count()); // the running callable's and ours
    EXPECT_EQ(WAIT_TIMEOUT, WaitForSingleObject(ended.Get(), 0));
    SetEvent(mayEnd.Get());
    ASSERT_TRUE(Wait(ended.Get()));
    EXPECT_EQ(42, seen);
}

TEST(Thread, whose_body_throws_ends_with_exit_code_1_and_takes_nobody_with_it)
{
    const Thread thread([] { throw std::runtime_error("out of the body"); });
    ASSERT_TRUE(Wait(thread.Handle()));
    DWORD code = 99;
    EXPECT_TRUE(GetExitCodeThread(thread.Handle(), &code));
    EXPECT_EQ(1U, code);
}

TEST(Thread, with_an_empty_body_fails_on_the_new_thread_and_not_here)
{
    const Thread thread{std::function<void()>()};
    ASSERT_TRUE(Wait(thread.Handle()));
    DWORD code = 99;
    EXPECT_TRUE(GetExitCodeThread(thread.Handle(), &code));
    EXPECT_EQ(1U, code);
}

} // namespace vqrx::test
