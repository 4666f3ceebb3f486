#include "log_perf/performance/PerformanceSampler.h"

#include "ImportPatch.h"
#include "log_perf/time/Clock.h"

#include <gtest/gtest.h>

#include <windows.h>

namespace vqrx::test {
namespace {

using log::log_perf::v2::CurrentTimestamp;
using log::log_perf::v2::MillisecondsOf;
using log::log_perf::v2::PerformanceSample;
using log::log_perf::v2::SamplePerformance;
using log::log_perf::v2::SampleSystemTimes;

TEST(PerformanceSampler, A_sample_holds_figures_of_this_process_and_machine)
{
    const auto before = MillisecondsOf(CurrentTimestamp());
    const PerformanceSample sample = SamplePerformance();
    const auto after = MillisecondsOf(CurrentTimestamp());
    EXPECT_LE(before, MillisecondsOf(sample.time));
    EXPECT_LE(MillisecondsOf(sample.time), after);
    EXPECT_LT(0U, sample.workingSet);
    EXPECT_LT(0U, sample.pageFileUsage);
    EXPECT_LT(0U, sample.totalPageFile);
    EXPECT_LE(sample.availablePageFile, sample.totalPageFile);
    EXPECT_EQ(sample.totalPageFile - sample.availablePageFile, sample.Committed());
    EXPECT_LT(0U, sample.system.busy);
    EXPECT_LE(sample.system.idle, sample.system.busy);
}

TEST(PerformanceSampler, The_times_of_process_and_machine_grow)
{
    const PerformanceSample first = SamplePerformance();
    PerformanceSample later = SamplePerformance();
    for (int round = 0; round < 200000;
         ++round) { // uses processor time until both clocks have ticked
        later = SamplePerformance();
        if (later.kernelTime + later.userTime > first.kernelTime + first.userTime &&
            later.system.busy > first.system.busy) {
            break;
        }
    }
    EXPECT_LT(first.kernelTime + first.userTime, later.kernelTime + later.userTime);
    EXPECT_LT(first.system.busy, later.system.busy);
    EXPECT_LE(first.system.idle, later.system.idle);
}

BOOL WINAPI LargeSystemTimes(FILETIME* idle, FILETIME* kernel, FILETIME* user)
{
    *idle = {1, 2};
    *kernel = {0xFFFFFFFF, 4};
    *user = {1, 5};
    return TRUE;
}

TEST(PerformanceSampler, Busy_time_is_kernel_plus_user_with_both_halves_of_each_time)
{
    const ImportPatch patch("GetSystemTimes", &LargeSystemTimes);
    EXPECT_EQ(0x200000001U, SampleSystemTimes().idle);
    EXPECT_EQ(0xA00000000U, SampleSystemTimes().busy);
}

BOOL WINAPI NoSystemTimes(FILETIME*, FILETIME*, FILETIME*)
{
    return FALSE;
}

TEST(PerformanceSampler, A_figure_that_the_system_does_not_give_is_0)
{
    const ImportPatch patch("GetSystemTimes", &NoSystemTimes);
    EXPECT_EQ(0U, SampleSystemTimes().idle);
    EXPECT_EQ(0U, SampleSystemTimes().busy);
}

} // namespace
} // namespace vqrx::test
