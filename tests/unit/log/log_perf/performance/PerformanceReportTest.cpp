#include "log_perf/performance/PerformanceReport.h"

#include "CapturingSink.h"
#include "ImportPatch.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <cstdint>
#include <string>
#include <vector>

namespace vqrx::test {
namespace {

using namespace log::log_perf::v2;

// What the system answers, 100-ns units.
std::uint64_t idleTime = 0;
std::uint64_t busyTime = 0;
std::uint64_t processTime = 0;

FILETIME FileTimeOf(std::uint64_t time)
{
    return {static_cast<DWORD>(time), static_cast<DWORD>(time >> 32)};
}

BOOL WINAPI ChosenSystemTimes(FILETIME* idle, FILETIME* kernel, FILETIME* user)
{
    *idle = FileTimeOf(idleTime);
    *kernel = FileTimeOf(busyTime);
    *user = FileTimeOf(0);
    return TRUE;
}

BOOL WINAPI ChosenProcessTimes(HANDLE, FILETIME*, FILETIME*, FILETIME* kernel, FILETIME* user)
{
    *kernel = FileTimeOf(processTime / 2);
    *user = FileTimeOf(processTime / 2);
    return TRUE;
}

struct LastRate : IPerformanceObserver {
    void OnPerformance(std::int32_t, std::int32_t, std::int32_t, std::int32_t perSecond) override
    {
        rate = perSecond;
    }
    std::int32_t rate = -1;
};

TEST(PerformanceReport, A_period_without_busy_time_counts_toward_the_process_in_the_next_one)
{
    const ImportPatch system("GetSystemTimes", &ChosenSystemTimes);
    const ImportPatch process("GetProcessTimes", &ChosenProcessTimes);
    idleTime = 1000;
    busyTime = 10000;
    processTime = 0;
    CapturingSink rows;
    LastRate observer;
    GuardedReceivers receivers;
    receivers.Lock()->performanceSink = &rows;
    receivers.Lock()->observer = &observer;
    GuardedStatistics statistics;
    GuardedBufferFullPeriods periods;
    PerformanceReport report(receivers, statistics, periods, 1000);

    busyTime += 10000;
    processTime = 200;
    report.Make(); // the header

    idleTime += 5000; // the busy time stands still
    processTime = 1200;
    statistics.Lock()->counters.numPoliticChoices = 30;
    report.Make();
    ASSERT_EQ(1U, rows.Texts().size());
    EXPECT_EQ(0, observer.rate);

    idleTime += 2500;
    busyTime += 10000;
    processTime = 2200;
    statistics.Lock()->counters.numPoliticChoices = 40;
    report.Make();
    ASSERT_EQ(2U, rows.Texts().size());
    // The process: 2000 of 10000 in both periods. The machine: 2500 of 10000 idle in the last one.
    EXPECT_EQ("20,75,", rows.Texts()[1].substr(0, 6));
    EXPECT_EQ(40, observer.rate);
}

} // namespace
} // namespace vqrx::test
