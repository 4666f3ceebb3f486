#include "ProgramVersion.h"

#include <gtest/gtest.h>

namespace vqrx::test {

using setup::v0::IsOlder;

TEST(ProgramVersion, Numbers_are_compared_and_not_letters)
{
    EXPECT_TRUE(IsOlder("1.2.9", "1.2.10"));
    EXPECT_FALSE(IsOlder("1.2.10", "1.2.9"));
    EXPECT_TRUE(IsOlder("0.9", "1.0.0"));
    EXPECT_FALSE(IsOlder("2.0", "1.9.9"));
}

TEST(ProgramVersion, A_version_is_not_older_than_itself_and_a_missing_number_is_zero)
{
    EXPECT_FALSE(IsOlder("1.0.0", "1.0.0"));
    EXPECT_FALSE(IsOlder("1", "1.0.0"));
    EXPECT_FALSE(IsOlder("1.0.0", "1"));
    EXPECT_TRUE(IsOlder("1", "1.0.1"));
    EXPECT_TRUE(IsOlder("", "0.1"));
    EXPECT_FALSE(IsOlder("x.y", "0"));
    EXPECT_FALSE(IsOlder("1.", "1..0"));
}

} // namespace vqrx::test
