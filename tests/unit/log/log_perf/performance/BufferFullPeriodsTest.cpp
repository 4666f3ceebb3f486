#include "log_perf/performance/BufferFullPeriods.h"

#include <gtest/gtest.h>

namespace vqrx::test {
namespace {

using log::log_perf::v2::BufferFullPeriods;
using log::log_perf::v2::BufferFullSettings;

void Notice(BufferFullPeriods& periods, int times)
{
    for (int i = 0; i < times; ++i) {
        periods.Notice();
    }
}

TEST(BufferFullPeriods, Without_a_check_no_period_is_judged)
{
    BufferFullPeriods periods;
    Notice(periods, 3);
    EXPECT_EQ(0U, periods.LastDelta());
    EXPECT_EQ(0U, periods.PeriodsOverThreshold());
    EXPECT_FALSE(periods.NeedRestart());
}

TEST(BufferFullPeriods, With_the_initial_settings_the_first_check_needs_a_restart)
{
    BufferFullPeriods periods;
    periods.Check();
    EXPECT_EQ(1U, periods.PeriodsOverThreshold());
    EXPECT_TRUE(periods.NeedRestart());
}

TEST(BufferFullPeriods, No_period_is_judged_before_the_period_length_has_elapsed)
{
    BufferFullPeriods periods;
    periods.Configure({1000, 1, 1, 2500});
    for (int step = 0; step < 3; ++step) { // 1000, 2000, 3000 ms
        Notice(periods, 5);
        periods.Check();
        EXPECT_EQ(0U, periods.LastDelta());
        EXPECT_FALSE(periods.NeedRestart());
    }
    Notice(periods, 5);
    periods.Check();
    EXPECT_EQ(5U, periods.LastDelta());
    EXPECT_EQ(1U, periods.PeriodsOverThreshold());
    EXPECT_TRUE(periods.NeedRestart());
}

TEST(BufferFullPeriods, A_period_below_the_threshold_resets_the_count_of_bad_periods)
{
    BufferFullPeriods periods;
    periods.Configure({1000, 3, 100, 0});
    Notice(periods, 3);
    periods.Check();
    Notice(periods, 4);
    periods.Check();
    EXPECT_EQ(4U, periods.LastDelta());
    EXPECT_EQ(2U, periods.PeriodsOverThreshold());
    Notice(periods, 2);
    periods.Check();
    EXPECT_EQ(2U, periods.LastDelta());
    EXPECT_EQ(0U, periods.PeriodsOverThreshold());
    EXPECT_FALSE(periods.NeedRestart());
}

TEST(BufferFullPeriods, The_need_for_a_restart_is_set_at_the_maximum_and_never_cleared)
{
    BufferFullPeriods periods;
    periods.Configure({1000, 1, 2, 0});
    Notice(periods, 1);
    periods.Check();
    EXPECT_FALSE(periods.NeedRestart());
    Notice(periods, 1);
    periods.Check();
    EXPECT_TRUE(periods.NeedRestart());
    periods.Check();
    EXPECT_EQ(0U, periods.PeriodsOverThreshold());
    EXPECT_TRUE(periods.NeedRestart());
}

} // namespace
} // namespace vqrx::test
