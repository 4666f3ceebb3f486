#include "com/UniqueVariant.h"

#include "CountingObject.h"

#include <gtest/gtest.h>

namespace vqrx::test {

using system::com::v1::UniqueVariant;

TEST(UniqueVariant, Put_and_the_end_of_the_owner_release_the_held_value)
{
    CountingObject first;
    CountingObject second;
    {
        UniqueVariant value;
        VARIANT* const held = value.Put();
        held->vt = VT_UNKNOWN;
        held->punkVal = &first;
        EXPECT_EQ(VT_UNKNOWN, value.Get().vt);
        EXPECT_EQ(VT_EMPTY, value.Put()->vt);
        EXPECT_EQ(0U, first.references);
        held->vt = VT_UNKNOWN;
        held->punkVal = &second;
    }
    EXPECT_EQ(0U, second.references);
}

} // namespace vqrx::test
