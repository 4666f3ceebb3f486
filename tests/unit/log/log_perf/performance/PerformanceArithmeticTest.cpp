#include "log_perf/performance/PerformanceArithmetic.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>

namespace vqrx::test {
namespace {

using log::log_perf::v2::LoadBetween;
using log::log_perf::v2::PercentOf;
using log::log_perf::v2::PoliticRate;
using log::log_perf::v2::ProcessCpu;
using log::log_perf::v2::SystemLoad;

constexpr std::uint64_t kSecond = 10000000; // 100-ns units

TEST(PerformanceArithmetic, TotalCpu_is_the_busy_share_of_the_period)
{
    const SystemLoad load = LoadBetween({100, 1000}, {100 + 3 * kSecond, 1000 + 4 * kSecond});
    EXPECT_EQ(40000000, load.totalDelta);
    EXPECT_EQ(25, load.totalCpu);
}

TEST(PerformanceArithmetic, The_first_period_counts_from_zero)
{
    const SystemLoad load = LoadBetween({0, 0}, {90, 100});
    EXPECT_EQ(100, load.totalDelta);
    EXPECT_EQ(10, load.totalCpu);
}

TEST(PerformanceArithmetic, TotalCpu_is_100_if_the_busy_time_stands_still)
{
    const SystemLoad load = LoadBetween({5, 1000}, {70, 1000});
    EXPECT_EQ(0, load.totalDelta);
    EXPECT_EQ(100, load.totalCpu);
}

TEST(PerformanceArithmetic, TotalCpu_is_0_on_an_idle_machine_and_100_without_idle_time)
{
    EXPECT_EQ(0, LoadBetween({0, 0}, {kSecond, kSecond}).totalCpu);
    EXPECT_EQ(100, LoadBetween({0, 0}, {0, kSecond}).totalCpu);
}

TEST(PerformanceArithmetic, TotalCpu_is_negative_if_the_idle_time_runs_ahead)
{
    EXPECT_EQ(-50, LoadBetween({0, 0}, {15, 10}).totalCpu);
}

TEST(PerformanceArithmetic, Counters_that_wrapped_give_the_right_load)
{
    const std::uint64_t top = std::numeric_limits<std::uint64_t>::max();
    const SystemLoad load = LoadBetween({top - 9, top - 19}, {15, 80});
    EXPECT_EQ(100, load.totalDelta);
    EXPECT_EQ(75, load.totalCpu);
}

TEST(PerformanceArithmetic, Counters_that_ran_backwards_do_not_overflow)
{
    EXPECT_EQ(-1, LoadBetween({0, 1}, {0, 0}).totalDelta);
    EXPECT_EQ(100, LoadBetween({0, 1}, {0, 0}).totalCpu);
    const std::int64_t lowest = std::numeric_limits<std::int64_t>::min();
    EXPECT_EQ(0, PercentOf(lowest, -1)); // the product wraps to 0
}

TEST(PerformanceArithmetic, On_64_processors_the_share_is_that_of_all_processors)
{
    // One second, 64 processors, the process keeps one of them busy.
    const SystemLoad load = LoadBetween({0, 0}, {48 * kSecond, 64 * kSecond});
    EXPECT_EQ(25, load.totalCpu);
    EXPECT_EQ(1, ProcessCpu(0, kSecond, load.totalDelta));
    EXPECT_EQ(100, ProcessCpu(0, 64 * kSecond, load.totalDelta));
}

TEST(PerformanceArithmetic, The_share_of_a_process_is_rounded_towards_zero)
{
    EXPECT_EQ(0, ProcessCpu(1000, 1009, 1000));
    EXPECT_EQ(33, ProcessCpu(0, 1, 3));
}

TEST(PerformanceArithmetic, The_rate_is_politic_choices_per_second)
{
    EXPECT_EQ(250, PoliticRate(100, 350, 1000));
    EXPECT_EQ(500, PoliticRate(100, 350, 500));
    EXPECT_EQ(125, PoliticRate(100, 350, 2000));
    EXPECT_EQ(0, PoliticRate(7, 7, 1000));
}

TEST(PerformanceArithmetic, The_rate_is_negative_if_the_counter_fell)
{
    EXPECT_EQ(-3, PoliticRate(10, 7, 1000));
    EXPECT_EQ(-3, PoliticRate(1, 0xFFFFFFFE, 1000));
}

TEST(PerformanceArithmetic, The_rate_is_right_across_the_wrap_of_the_counter)
{
    EXPECT_EQ(6, PoliticRate(0xFFFFFFFD, 3, 1000));
}

TEST(PerformanceArithmetic, The_rate_is_0_for_a_period_of_length_0)
{
    EXPECT_EQ(0, PoliticRate(0, 5, 0));
}

} // namespace
} // namespace vqrx::test
