#include "ImportPatch.h"
#include "thread/Thread.h"

#include <gtest/gtest.h>

#include <process.h>

#include <atomic>
#include <memory>

namespace vqrx::test {
namespace {

uintptr_t __cdecl RefuseThread(void*, unsigned, _beginthreadex_proc_type, void*, unsigned,
                               unsigned*)
{
    return 0;
}

_beginthreadex_proc_type heldEntry = nullptr;
void* heldArgument = nullptr;

// A thread that the system starts later: the test calls its entry.
uintptr_t __cdecl HoldThread(void*, unsigned, _beginthreadex_proc_type entry, void* argument,
                             unsigned, unsigned*)
{
    heldEntry = entry;
    heldArgument = argument;
    return reinterpret_cast<uintptr_t>(CreateEventA(nullptr, TRUE, FALSE, nullptr));
}

} // namespace

TEST(Thread, A_body_that_begins_after_its_Thread_was_destroyed_still_runs)
{
    const auto captured = std::make_shared<int>(42);
    int seen = 0;
    {
        const ImportPatch patch("_beginthreadex", HoldThread);
        const system::thread::v1::Thread thread([&seen, captured] { seen = *captured; });
    }
    EXPECT_EQ(2, captured.use_count()); // one owner is the body, one this test
    EXPECT_EQ(0U, heldEntry(heldArgument));
    EXPECT_EQ(42, seen);
    EXPECT_EQ(1, captured.use_count());
}

TEST(Thread, A_thread_that_cannot_be_created_has_no_handle_and_frees_its_body)
{
    const auto captured = std::make_shared<int>(1);
    {
        const ImportPatch patch("_beginthreadex", RefuseThread);
        const system::thread::v1::Thread thread([captured] { FAIL(); });
        EXPECT_EQ(nullptr, thread.Handle());
        EXPECT_EQ(0U, thread.Id());
    }
    EXPECT_EQ(1, captured.use_count());
}

namespace {

DWORD(WINAPI* realWait)(HANDLE, DWORD) = nullptr;
HANDLE mayEnd = nullptr;
int refusedWaits = 0;

// Refuses two waits. After the second one the thread may end.
DWORD WINAPI RefuseTwoWaits(HANDLE object, DWORD milliseconds)
{
    if (milliseconds != INFINITE || refusedWaits == 2) {
        return realWait(object, milliseconds);
    }
    if (++refusedWaits == 2) {
        SetEvent(mayEnd);
    }
    SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return WAIT_FAILED;
}

} // namespace

TEST(Thread, A_wait_for_the_end_that_Windows_refuses_is_repeated_until_the_thread_has_ended)
{
    const system::win32::v1::UniqueKernelHandle event(CreateEventA(nullptr, TRUE, FALSE, nullptr));
    mayEnd = event.Get();
    refusedWaits = 0;
    const ImportPatch patch("WaitForSingleObject", RefuseTwoWaits, realWait);
    std::atomic<bool> ended = false;
    const system::thread::v1::Thread thread([&] {
        realWait(mayEnd, 60000);
        ended = true;
    });
    system::thread::v1::WaitForEnd(thread.Handle());
    EXPECT_TRUE(ended);
    EXPECT_EQ(2, refusedWaits);
    system::thread::v1::WaitForEnd(nullptr); // returns at once
}

} // namespace vqrx::test
