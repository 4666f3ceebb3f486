#include "win32/UniqueHandle.h"

#include <gtest/gtest.h>

namespace vqrx::test {
namespace {

using namespace system::win32::v1;

bool IsOpen(HANDLE handle)
{
    DWORD flags = 0;
    return GetHandleInformation(handle, &flags) != FALSE;
}

HANDLE MakeEvent()
{
    return CreateEventA(nullptr, TRUE, FALSE, nullptr);
}

} // namespace

TEST(UniqueHandle, closes_its_handle_at_its_end)
{
    const HANDLE event = MakeEvent();
    {
        const UniqueKernelHandle owner(event);
        EXPECT_TRUE(owner);
        EXPECT_TRUE(IsOpen(event));
    }
    EXPECT_FALSE(IsOpen(event));
}

TEST(UniqueHandle, takes_null_and_the_invalid_value_for_nothing)
{
    EXPECT_FALSE(UniqueKernelHandle());
    EXPECT_FALSE(UniqueKernelHandle(nullptr));
    EXPECT_FALSE(UniqueKernelHandle(INVALID_HANDLE_VALUE));
}

TEST(UniqueHandle, moved_hands_its_handle_over)
{
    const HANDLE event = MakeEvent();
    UniqueKernelHandle source(event);
    UniqueKernelHandle target(MakeEvent());
    const HANDLE replaced = target.Get();
    target = std::move(source);
    EXPECT_FALSE(source); // NOLINT(bugprone-use-after-move): promised
    EXPECT_EQ(event, target.Get());
    EXPECT_FALSE(IsOpen(replaced));
}

TEST(UniqueHandle, released_is_the_callers_to_close)
{
    UniqueKernelHandle owner(MakeEvent());
    const UniqueKernelHandle mine(owner.Release());
    EXPECT_FALSE(owner);
    EXPECT_TRUE(IsOpen(mine.Get()));
}

TEST(UniqueHandle, closing_keeps_the_threads_last_error)
{
    UniqueKernelHandle owner(MakeEvent());
    SetLastError(1234);
    owner.Reset();
    EXPECT_EQ(1234U, GetLastError());
}

} // namespace vqrx::test
