#include "TimeScale.h"

#include <gtest/gtest.h>

#include <limits>

namespace vqrx::test {
namespace {

using client::v0::TimeScale;

TEST(TimeScale, shows_places_and_widths_in_percent)
{
    const TimeScale scale(1000, 9000);
    EXPECT_EQ(scale.PlaceText(1000), "0.000%");
    EXPECT_EQ(scale.PlaceText(2000), "12.500%");
    EXPECT_EQ(scale.PlaceText(9000), "100.000%");
    EXPECT_EQ(scale.WidthText(2000, 4000), "25.000%");
}

TEST(TimeScale, keeps_times_outside_the_axis_on_it)
{
    const TimeScale scale(1000, 9000);
    EXPECT_EQ(scale.Place(0), 0.0);
    EXPECT_EQ(scale.Place(std::numeric_limits<std::int64_t>::max()), 1.0);
    EXPECT_EQ(scale.WidthText(4000, 2000), "0.000%");
}

TEST(TimeScale, of_an_axis_without_length_can_be_used)
{
    const TimeScale scale(1000, 1000);
    EXPECT_EQ(scale.PlaceText(1000), "0.000%");
    EXPECT_EQ(scale.WidthText(1000, 1000), "0.000%");
}

} // namespace
} // namespace vqrx::test
