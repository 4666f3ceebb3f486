#include "win32/NoErrorBoxes.h"

#include <gtest/gtest.h>

namespace vqrx::test {

TEST(NoErrorBoxes, Thread_shows_no_error_boxes_until_the_end_and_keeps_its_other_modes)
{
    DWORD before = 0;
    ASSERT_TRUE(SetThreadErrorMode(SEM_NOOPENFILEERRORBOX, &before));
    {
        const system::win32::v1::NoErrorBoxes none;
        EXPECT_EQ(DWORD{SEM_NOOPENFILEERRORBOX | SEM_FAILCRITICALERRORS}, GetThreadErrorMode());
    }
    EXPECT_EQ(DWORD{SEM_NOOPENFILEERRORBOX}, GetThreadErrorMode());
    SetThreadErrorMode(before, nullptr);
}

} // namespace vqrx::test
