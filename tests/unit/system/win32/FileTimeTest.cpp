#include "win32/FileTime.h"

#include <gtest/gtest.h>

namespace vqrx::test {

using namespace system::win32::v1;

TEST(FileTime, Ticks_joins_the_two_halves)
{
    EXPECT_EQ(0x0123456789ABCDEFU, Ticks(FILETIME{0x89ABCDEF, 0x01234567}));
    EXPECT_EQ(0xFFFFFFFFFFFFFFFFU, Ticks(FILETIME{0xFFFFFFFF, 0xFFFFFFFF}));
}

TEST(FileTime, Milliseconds_of_a_duration_are_rounded_down)
{
    EXPECT_EQ(0, Milliseconds(FILETIME{9999, 0}));
    EXPECT_EQ(1, Milliseconds(FILETIME{10000, 0}));
    EXPECT_EQ(429496, Milliseconds(FILETIME{0, 1})); // 2^32 ticks
}

TEST(FileTime, Unix_time_begins_at_the_first_of_January_1970)
{
    EXPECT_EQ(0, UnixMilliseconds(FILETIME{0xD53E8000, 0x019DB1DE}));
    EXPECT_EQ(1, UnixMilliseconds(FILETIME{0xD53E8000 + 10000, 0x019DB1DE}));
}

TEST(FileTime, A_date_before_1970_is_negative_in_Unix_time)
{
    EXPECT_EQ(-11644473600000, UnixMilliseconds(FILETIME{0, 0}));
}

} // namespace vqrx::test
