#include "ReportTime.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace vqrx::client::v0 {

void PrintTo(const Tick& tick, std::ostream* stream)
{
    *stream << tick.timeMs << " " << tick.label;
}

} // namespace vqrx::client::v0

namespace vqrx::test {
namespace {

using client::v0::AxisTicks;
using client::v0::DurationText;
using client::v0::LocalText;
using client::v0::Tick;
using client::v0::ZoneOffset;
using client::v0::ZoneText;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::int64_t kTime = 1763265156123; // 2025-11-16T03:52:36.123Z

TEST(ZoneOffset, is_the_difference_between_the_two_times_of_a_record)
{
    EXPECT_EQ(ZoneOffset("Sun Nov 16 03:52:36.123", kTime), 0);
    EXPECT_EQ(ZoneOffset("Sun Nov 16 04:52:36.123", kTime), 60);
    EXPECT_EQ(ZoneOffset("Sun Nov 16 09:22:36.123", kTime), 330);
    EXPECT_EQ(ZoneOffset("Sat Nov 15 22:52:36.123", kTime), -300);
    EXPECT_EQ(ZoneOffset("Sun Nov 16 17:52:36.123", kTime), 840);
}

TEST(ZoneOffset, is_right_at_the_turn_of_the_year)
{
    EXPECT_EQ(ZoneOffset("Thu Jan  1 00:30:00.000", 1767223800000), 60); // 2025-12-31T23:30Z
    EXPECT_EQ(ZoneOffset("Wed Dec 31 23:30:00.000", 1767227400000), -60);
}

TEST(ZoneOffset, is_unknown_if_the_times_do_not_match)
{
    for (const char* const date :
         {"", "Sun Nov 16", "Sun Nov 16 03:53:36.123", "Mon Nov 17 19:52:36.123",
          "Sun Xxx 16 03:52:36.123", "Sun ovD 16 03:52:36.123", "Sun Nov xx 03:52:36.123",
          "\?\?\? \?\?\? \?\? \?\?:\?\?:\?\?.123"}) {
        EXPECT_EQ(ZoneOffset(date, kTime), std::nullopt) << date;
    }
    EXPECT_EQ(ZoneOffset("Sun Nov 16 03:52:36.123", -1), std::nullopt);
    EXPECT_EQ(ZoneOffset("Sun Nov 16 03:52:36.123", 9223372036854775807), std::nullopt);
}

TEST(ZoneText, shows_the_distance_from_utc)
{
    EXPECT_EQ(ZoneText(0), "UTC");
    EXPECT_EQ(ZoneText(60), "UTC+01:00");
    EXPECT_EQ(ZoneText(-210), "UTC-03:30");
}

TEST(LocalText, is_the_time_in_the_zone)
{
    EXPECT_EQ(LocalText(kTime, 0), "2025-11-16 03:52:36");
    EXPECT_EQ(LocalText(kTime, -300), "2025-11-15 22:52:36");
    EXPECT_EQ(LocalText(-5, 60), "-5 ms");
}

TEST(DurationText, has_two_units_at_most)
{
    EXPECT_EQ(DurationText(0), "0 ms");
    EXPECT_EQ(DurationText(999), "999 ms");
    EXPECT_EQ(DurationText(59999), "59 s");
    EXPECT_EQ(DurationText(60000), "1 min");
    EXPECT_EQ(DurationText(1044000), "17 min 24 s");
    EXPECT_EQ(DurationText(11100000), "3 h 5 min");
    EXPECT_EQ(DurationText(1047600000), "12 d 3 h");
}

TEST(AxisTicks, are_round_times_of_the_zone)
{
    EXPECT_THAT(AxisTicks(1763265156123, 1763279556123, 60),
                ElementsAre(Tick{1763265600000, "05:00"}, Tick{1763269200000, "06:00"},
                            Tick{1763272800000, "07:00"}, Tick{1763276400000, "08:00"}));
    EXPECT_THAT(AxisTicks(1763265156123, 1763265159123, 0),
                ElementsAre(Tick{1763265157000, "03:52:37"}, Tick{1763265158000, "03:52:38"},
                            Tick{1763265159000, "03:52:39"}));
}

TEST(AxisTicks, show_the_date_at_midnight)
{
    std::vector<std::string> labels;
    for (const Tick& tick : AxisTicks(1763265156123, 1763524356123, 0)) { // 3 days
        labels.push_back(tick.label);
    }
    EXPECT_THAT(labels, ElementsAre("12:00", "11-17", "12:00", "11-18", "12:00", "11-19"));
}

TEST(AxisTicks, are_seven_at_most)
{
    EXPECT_LE(AxisTicks(0, 253402000000000, 0).size(), 7U);
    EXPECT_THAT(AxisTicks(5, 4, 0), IsEmpty());
    EXPECT_THAT(AxisTicks(-5, 4, 0), IsEmpty());
    EXPECT_THAT(AxisTicks(0, 9223372036854775807, 0), IsEmpty());
}

} // namespace
} // namespace vqrx::test
