#include "log_perf/ReportDeadline.h"

#include <gtest/gtest.h>

namespace vqrx::test {
namespace {

using log::log_perf::v2::TimeUntilReport;

TEST(ReportDeadline, of_a_worker_that_just_started_has_passed)
{
    EXPECT_EQ(0U, TimeUntilReport(0, 1000, 1000));
    EXPECT_EQ(0U, TimeUntilReport(0, 1000, 123456789));
    EXPECT_EQ(0U, TimeUntilReport(0, 1000, 0xFFFFFFFF));
}

TEST(ReportDeadline, waits_on_a_machine_that_is_up_for_less_than_a_second)
{
    EXPECT_EQ(1000U, TimeUntilReport(0, 1000, 0));
    EXPECT_EQ(1U, TimeUntilReport(0, 1000, 999));
}

TEST(ReportDeadline, is_one_period_after_the_last_report)
{
    EXPECT_EQ(1000U, TimeUntilReport(5000, 1000, 5000));
    EXPECT_EQ(400U, TimeUntilReport(5000, 1000, 5600));
    EXPECT_EQ(1U, TimeUntilReport(5000, 1000, 5999));
    EXPECT_EQ(0U, TimeUntilReport(5000, 1000, 6000));
    EXPECT_EQ(0U, TimeUntilReport(5000, 1000, 60000));
}

TEST(ReportDeadline, behind_the_wrap_of_the_tick_makes_no_burst_of_reports)
{
    EXPECT_EQ(984U, TimeUntilReport(0xFFFFFF00, 1000, 0xFFFFFF10));
    EXPECT_EQ(488U, TimeUntilReport(0xFFFFFF00, 1000, 0x100));
    EXPECT_EQ(0U, TimeUntilReport(0xFFFFFF00, 1000, 0x2E8));
}

TEST(ReportDeadline, that_the_wrap_of_the_tick_overtook_is_not_seven_weeks_away)
{
    EXPECT_EQ(0U, TimeUntilReport(0xFFFFFC00, 1000, 0x10));
}

} // namespace
} // namespace vqrx::test
