#include "log_perf/time/Clock.h"

#include "ImportPatch.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <sys/timeb.h>

namespace vqrx::test {
namespace {

using log::log_perf::v2::CurrentTimestamp;
using log::log_perf::v2::MillisecondsOf;
using log::log_perf::v2::Timestamp;

// System time that the patch returns, 100-ns units since 1601.
std::uint64_t ticks = 0;
int zoneAsked = 0;
short zoneMinutes = 0;

void WINAPI PatchedTime(FILETIME* time)
{
    *time = {static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
}

void PatchedZone(Timestamp* time)
{
    ++zoneAsked;
    *time = {};
    time->timezone = zoneMinutes;
    time->dstflag = zoneMinutes == -120 ? 1 : 0;
}

} // namespace

TEST(Clock, The_time_is_the_one_that_the_C_runtime_gives)
{
    Timestamp before{};
    Timestamp after{};
    Timestamp now{};
    do { // again if the zone changed between the two reference calls
        _ftime64(&before);
        now = CurrentTimestamp();
        _ftime64(&after);
    } while (before.timezone != after.timezone || before.dstflag != after.dstflag);
    EXPECT_LE(MillisecondsOf(before), MillisecondsOf(now));
    EXPECT_LE(MillisecondsOf(now), MillisecondsOf(after));
    EXPECT_EQ(before.timezone, now.timezone);
    EXPECT_EQ(before.dstflag, now.dstflag);
}

TEST(Clock, The_zone_is_read_once_a_minute_and_follows_the_end_of_daylight_saving)
{
    const ImportPatch time("GetSystemTimeAsFileTime", &PatchedTime);
    const ImportPatch zone("_ftime64", &PatchedZone);
    // 2026-11-21 04:52:16.427 UTC
    ticks = (1795236736427ULL + 11644473600000ULL) * 10000;
    zoneAsked = 0;
    zoneMinutes = -120;
    const Timestamp first = CurrentTimestamp();
    EXPECT_EQ(1795236736, first.time);
    EXPECT_EQ(427, first.millitm);
    EXPECT_EQ(-120, first.timezone);
    EXPECT_EQ(1, first.dstflag);
    zoneMinutes = -60; // daylight saving ends
    ticks += 43ULL * 10000000;
    EXPECT_EQ(-120, CurrentTimestamp().timezone); // the last second of the minute
    EXPECT_EQ(1, zoneAsked);
    ticks += 1ULL * 10000000;
    EXPECT_EQ(-60, CurrentTimestamp().timezone);
    EXPECT_EQ(0, CurrentTimestamp().dstflag);
    EXPECT_EQ(2, zoneAsked);
}

} // namespace vqrx::test
