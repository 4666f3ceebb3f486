#include "com/UniqueVariant.h"

#include <gtest/gtest.h>

namespace vqrx::test {

using system::com::v1::UniqueVariant;

TEST(UniqueVariant, Put_clears_the_held_value)
{
    UniqueVariant value;
    value.Put()->vt = VT_I4;
    EXPECT_EQ(VT_I4, value.Get().vt);
    EXPECT_EQ(VT_EMPTY, value.Put()->vt);
}

} // namespace vqrx::test
