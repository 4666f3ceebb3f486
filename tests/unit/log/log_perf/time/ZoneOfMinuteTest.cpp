#include "log_perf/time/ZoneOfMinute.h"

#include <gtest/gtest.h>

namespace vqrx::test {
namespace {

using log::log_perf::v2::Timestamp;
using log::log_perf::v2::ZoneOfMinute;

Timestamp At(std::int64_t seconds)
{
    Timestamp timestamp{};
    timestamp.time = seconds;
    timestamp.millitm = 999;
    timestamp.timezone = 11;
    timestamp.dstflag = 12;
    return timestamp;
}

} // namespace

TEST(ZoneOfMinute, No_minute_is_known_at_first)
{
    const ZoneOfMinute zone;
    for (const std::int64_t seconds : {0, 59, 60, 1795236736}) {
        Timestamp timestamp = At(seconds);
        EXPECT_FALSE(zone.Fill(timestamp));
        EXPECT_EQ(11, timestamp.timezone);
        EXPECT_EQ(12, timestamp.dstflag);
    }
}

TEST(ZoneOfMinute, The_zone_is_known_only_in_the_minute_that_was_remembered)
{
    ZoneOfMinute zone;
    Timestamp remembered = At(120);
    remembered.timezone = -840;
    remembered.dstflag = 1;
    zone.Remember(remembered);
    Timestamp last = At(179);
    ASSERT_TRUE(zone.Fill(last));
    EXPECT_EQ(179, last.time);
    EXPECT_EQ(999, last.millitm);
    EXPECT_EQ(-840, last.timezone);
    EXPECT_EQ(1, last.dstflag);
    Timestamp before = At(119);
    EXPECT_FALSE(zone.Fill(before));
    Timestamp after = At(180);
    EXPECT_FALSE(zone.Fill(after));
}

} // namespace vqrx::test
