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

HANDLE MakeRawEvent()
{
    return CreateEventA(nullptr, TRUE, FALSE, nullptr);
}

} // namespace

TEST(UniqueHandle, The_handle_is_closed_at_the_end_of_its_owner)
{
    const HANDLE event = MakeRawEvent();
    {
        const UniqueKernelHandle owner(event);
        EXPECT_TRUE(owner);
        EXPECT_TRUE(IsOpen(event));
    }
    EXPECT_FALSE(IsOpen(event));
}

TEST(UniqueHandle, Null_and_the_invalid_handle_value_count_as_empty)
{
    EXPECT_FALSE(UniqueKernelHandle());
    EXPECT_FALSE(UniqueKernelHandle(nullptr));
    EXPECT_FALSE(UniqueKernelHandle(INVALID_HANDLE_VALUE));
}

TEST(UniqueHandle, A_move_hands_the_handle_over_and_closes_the_one_it_replaces)
{
    const HANDLE event = MakeRawEvent();
    UniqueKernelHandle source(event);
    UniqueKernelHandle target(MakeRawEvent());
    const HANDLE replaced = target.Get();
    target = std::move(source);
    EXPECT_FALSE(source); // NOLINT(bugprone-use-after-move): promised
    EXPECT_EQ(event, target.Get());
    EXPECT_FALSE(IsOpen(replaced));
}

TEST(UniqueHandle, A_released_handle_stays_open)
{
    UniqueKernelHandle owner(MakeRawEvent());
    const UniqueKernelHandle mine(owner.Release());
    EXPECT_FALSE(owner);
    EXPECT_TRUE(IsOpen(mine.Get()));
}

TEST(UniqueHandle, Put_closes_the_held_handle_and_takes_the_new_one)
{
    UniqueKernelHandle owner(MakeRawEvent());
    const HANDLE replaced = owner.Get();
    HANDLE* const out = owner.Put();
    EXPECT_FALSE(IsOpen(replaced));
    EXPECT_FALSE(owner);
    const HANDLE opened = MakeRawEvent();
    *out = opened;
    EXPECT_EQ(opened, owner.Get());
    owner.Reset();
    EXPECT_FALSE(IsOpen(opened));
}

TEST(UniqueHandle, Closing_keeps_the_last_error_of_the_thread)
{
    UniqueKernelHandle owner(MakeRawEvent());
    SetLastError(1234);
    owner.Reset();
    EXPECT_EQ(1234U, GetLastError());
}

} // namespace vqrx::test
