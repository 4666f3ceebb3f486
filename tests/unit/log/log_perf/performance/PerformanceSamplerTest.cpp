#include "log_perf/performance/PerformanceSampler.h"

#include "ImportPatch.h"
#include "log_perf/time/Clock.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <psapi.h>

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
    EXPECT_LT(0U, sample.system.total);
    EXPECT_LE(sample.system.idle, sample.system.total);
}

TEST(PerformanceSampler, The_times_of_process_and_machine_grow)
{
    const PerformanceSample first = SamplePerformance();
    PerformanceSample later = SamplePerformance();
    for (int round = 0; round < 200000;
         ++round) { // uses processor time until both clocks have ticked
        later = SamplePerformance();
        if (later.kernelTime + later.userTime > first.kernelTime + first.userTime &&
            later.system.total > first.system.total) {
            break;
        }
    }
    EXPECT_LT(first.kernelTime + first.userTime, later.kernelTime + later.userTime);
    EXPECT_LT(first.system.total, later.system.total);
    EXPECT_LE(first.system.idle, later.system.idle);
}

// On Windows the name of the function is a macro for another name.
#define DM_TEXT_OF(name) #name
#define DM_NAME_OF(function) DM_TEXT_OF(function)
constexpr const char* kGetProcessMemoryInfo = DM_NAME_OF(GetProcessMemoryInfo);

DWORD countersSize = 0;

BOOL WINAPI NumberedMemory(HANDLE, PROCESS_MEMORY_COUNTERS* counters, DWORD size)
{
    countersSize = size;
    counters->PageFaultCount = 1;
    counters->PeakWorkingSetSize = 2;
    counters->WorkingSetSize = 3;
    counters->PagefileUsage = 4;
    counters->PeakPagefileUsage = 5;
    return TRUE;
}

TEST(PerformanceSampler, Working_set_and_page_file_usage_are_the_present_ones_of_the_process)
{
    const ImportPatch patch(kGetProcessMemoryInfo, &NumberedMemory);
    const PerformanceSample sample = SamplePerformance();
    EXPECT_EQ(3U, sample.workingSet);
    EXPECT_EQ(4U, sample.pageFileUsage);
    EXPECT_EQ(72U, countersSize);
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
    EXPECT_EQ(0xA00000000U, SampleSystemTimes().total);
}

BOOL WINAPI NoSystemTimes(FILETIME*, FILETIME*, FILETIME*)
{
    return FALSE;
}

TEST(PerformanceSampler, A_figure_that_the_system_does_not_give_is_0)
{
    const ImportPatch patch("GetSystemTimes", &NoSystemTimes);
    EXPECT_EQ(0U, SampleSystemTimes().idle);
    EXPECT_EQ(0U, SampleSystemTimes().total);
}

} // namespace
} // namespace vqrx::test
