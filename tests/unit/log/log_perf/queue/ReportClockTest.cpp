#include "log_perf/queue/ReportClock.h"

#include <gtest/gtest.h>

namespace vqrx::test {
namespace {

using log::log_perf::v2::ReportClock;

constexpr std::uint32_t kPeriodMs = 1000;

std::uint32_t TimeUntilDue(std::uint32_t lastReportTick, std::uint32_t nowTick)
{
    ReportClock clock(kPeriodMs);
    clock.Restart(lastReportTick);
    return clock.TimeUntilDue(nowTick);
}

} // namespace

TEST(ReportClock, The_first_report_is_due_at_once)
{
    const ReportClock clock(kPeriodMs);
    EXPECT_EQ(0U, clock.TimeUntilDue(1000));
    EXPECT_EQ(0U, clock.TimeUntilDue(123456789));
    EXPECT_EQ(0U, clock.TimeUntilDue(0xFFFFFFFF));
}

TEST(ReportClock, The_first_report_waits_on_a_machine_that_is_up_for_less_than_a_second)
{
    const ReportClock clock(kPeriodMs);
    EXPECT_EQ(1000U, clock.TimeUntilDue(0));
    EXPECT_EQ(1U, clock.TimeUntilDue(999));
}

TEST(ReportClock, The_next_report_is_due_one_period_after_the_last_one)
{
    EXPECT_EQ(1000U, TimeUntilDue(5000, 5000));
    EXPECT_EQ(400U, TimeUntilDue(5000, 5600));
    EXPECT_EQ(1U, TimeUntilDue(5000, 5999));
    EXPECT_EQ(0U, TimeUntilDue(5000, 6000));
    EXPECT_EQ(0U, TimeUntilDue(5000, 60000));
}

TEST(ReportClock, The_wrap_of_the_tick_causes_no_burst_of_reports)
{
    EXPECT_EQ(984U, TimeUntilDue(0xFFFFFF00, 0xFFFFFF10));
    EXPECT_EQ(488U, TimeUntilDue(0xFFFFFF00, 0x100));
    EXPECT_EQ(0U, TimeUntilDue(0xFFFFFF00, 0x2E8));
}

TEST(ReportClock, The_wrap_of_the_tick_does_not_delay_a_report_that_is_overdue)
{
    EXPECT_EQ(0U, TimeUntilDue(0xFFFFFC00, 0x10));
}

} // namespace vqrx::test
