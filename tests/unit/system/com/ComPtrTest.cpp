#include "com/ComPtr.h"

#include "CountingObject.h"

#include <gtest/gtest.h>

#include <oleauto.h>

#include <utility>

namespace vqrx::test {
using namespace system::com::v1;

TEST(ComPtr, Adopt_takes_over_a_counted_reference_and_releases_it_at_the_end)
{
    CountingObject object;
    {
        const auto owner = ComPtr<IUnknown>::Adopt(&object);
        EXPECT_EQ(1U, object.references);
    }
    EXPECT_EQ(0U, object.references);
}

TEST(ComPtr, Share_and_copy_count_a_reference_and_a_move_does_not)
{
    CountingObject object;
    {
        const auto owner = ComPtr<IUnknown>::Share(&object);
        EXPECT_EQ(2U, object.references);
        auto copy = owner;
        EXPECT_EQ(3U, object.references);
        const auto moved = std::move(copy);
        EXPECT_EQ(3U, object.references);
        EXPECT_FALSE(copy); // NOLINT(bugprone-use-after-move): promised
    }
    EXPECT_EQ(1U, object.references);
}

TEST(ComPtr, Put_releases_the_held_reference_before_a_new_one_arrives)
{
    CountingObject first;
    CountingObject second;
    auto owner = ComPtr<IUnknown>::Adopt(&first);
    *owner.Put() = &second;
    EXPECT_EQ(0U, first.references);
    EXPECT_EQ(&second, owner.Get());
}

TEST(ComPtr, Query_returns_the_interface_or_is_empty)
{
    CountingObject object;
    const auto owner = ComPtr<IUnknown>::Adopt(&object);
    EXPECT_TRUE(owner.Query<IUnknown>());
    EXPECT_FALSE(owner.Query<IDispatch>());
    EXPECT_FALSE(ComPtr<IUnknown>().Query<IUnknown>());
}

} // namespace vqrx::test
