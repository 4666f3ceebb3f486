#include "TimeText.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <ctime>
#include <limits>
#include <string>

namespace vqrx::test {
namespace {

using client::v0::IsoTime;
using client::v0::ParseMoment;

constexpr std::int64_t kNow = 1763265156123; // 2025-11-16T03:52:36.123Z

std::string LocalClock(std::int64_t timeMs)
{
    const auto seconds = static_cast<std::time_t>(timeMs / 1000);
    const std::tm local = *std::localtime(&seconds);
    char text[32] = {};
    std::strftime(text, sizeof(text), "%Y-%m-%dT%H:%M:%S", &local);
    return text;
}

TEST(IsoTime, is_utc_with_milliseconds)
{
    EXPECT_EQ(IsoTime(kNow), "2025-11-16T03:52:36.123Z");
    EXPECT_EQ(IsoTime(0), "1970-01-01T00:00:00.000Z");
    EXPECT_EQ(IsoTime(-1), "1969-12-31T23:59:59.999Z");
    EXPECT_EQ(IsoTime(253402300799999), "9999-12-31T23:59:59.999Z");
}

TEST(IsoTime, is_nothing_beyond_the_year_9999)
{
    EXPECT_EQ(IsoTime(253402300800000), std::nullopt);
    EXPECT_EQ(IsoTime(std::numeric_limits<std::int64_t>::max()), std::nullopt);
    EXPECT_EQ(IsoTime(std::numeric_limits<std::int64_t>::min()), std::nullopt);
}

TEST(ParseMoment, reads_utc)
{
    EXPECT_EQ(ParseMoment("2025-11-16T03:52:36.123Z", 0), kNow);
    EXPECT_EQ(ParseMoment("2025-11-16 03:52:36Z", 0), kNow - 123);
    EXPECT_EQ(ParseMoment("2025-11-16T03:52Z", 0), kNow - 36123);
    EXPECT_EQ(ParseMoment("2025-11-16T03:52:36.1239Z", 0), kNow);
    EXPECT_EQ(ParseMoment("2025-11-16T03:52:36.1Z", 0), kNow - 23);
}

TEST(ParseMoment, reads_local_time)
{
    EXPECT_EQ(ParseMoment(LocalClock(kNow), 0), kNow - 123);
    EXPECT_EQ(ParseMoment(LocalClock(kNow) + ".123", 0), kNow);
    EXPECT_EQ(ParseMoment(LocalClock(kNow).substr(11), kNow), kNow - 123);
    EXPECT_EQ(ParseMoment(LocalClock(kNow).substr(11, 5), kNow), kNow - 36123);
}

TEST(ParseMoment, reads_days)
{
    const auto today = ParseMoment("today", kNow);
    ASSERT_TRUE(today);
    EXPECT_EQ(LocalClock(*today), LocalClock(kNow).substr(0, 11) + "00:00:00");
    EXPECT_EQ(ParseMoment(LocalClock(kNow).substr(0, 10), kNow), today);
    const auto yesterday = ParseMoment("yesterday", kNow);
    ASSERT_TRUE(yesterday);
    EXPECT_EQ(LocalClock(*yesterday), LocalClock(*today - 12 * 3600000).substr(0, 11) + "00:00:00");
}

TEST(ParseMoment, reads_a_time_before_now)
{
    EXPECT_EQ(ParseMoment("45s", kNow), kNow - 45000);
    EXPECT_EQ(ParseMoment("10m", kNow), kNow - 600000);
    EXPECT_EQ(ParseMoment("2h", kNow), kNow - 7200000);
    EXPECT_EQ(ParseMoment("3d", kNow), kNow - 259200000);
    EXPECT_EQ(ParseMoment("0s", kNow), kNow);
}

TEST(ParseMoment, refuses_any_other_text)
{
    for (const char* const text : {"",
                                   "m",
                                   "10",
                                   "10x",
                                   "-5m",
                                   "10mm",
                                   "99999999999999999999d",
                                   "9999999999999999d",
                                   "2025-13-01",
                                   "2025-02-30",
                                   "2025-11-16T",
                                   "2025-11-16T24:00",
                                   "2025-11-16T03:60Z",
                                   "2025-11-16T03:52:60Z",
                                   "2025-11-16T03:52:36.Z",
                                   "2025-11-16T03:52:36ZZ",
                                   "3:52",
                                   "03:5",
                                   "03:52Z",
                                   "25-11-16",
                                   "Yesterday",
                                   "2025-11-16T03:52:36+01:00"}) {
        EXPECT_EQ(ParseMoment(text, kNow), std::nullopt) << text;
    }
}

} // namespace
} // namespace vqrx::test
