#include "StartDelays.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

namespace vqrx::test {
namespace {

using guard::v0::StartDelays;

constexpr std::uint64_t kMinute = 60000;

TEST(StartDelays, Waits_double_from_none_to_a_minute)
{
    StartDelays delays;
    std::vector<std::uint32_t> waits;
    std::uint64_t now = 5;
    for (int end = 0; end < 10; ++end) {
        waits.push_back(delays.NextMs(now));
        now += waits.back() + 1000;
    }
    EXPECT_EQ(waits, (std::vector<std::uint32_t>{0, 1000, 2000, 4000, 8000, 16000, 32000, 60000,
                                                 60000, 60000}));
}

TEST(StartDelays, Ten_quiet_minutes_begin_the_waits_anew)
{
    StartDelays delays;
    EXPECT_EQ(delays.NextMs(0), 0U);
    EXPECT_EQ(delays.NextMs(10 * kMinute - 1), 1000U);
    EXPECT_EQ(delays.NextMs(20 * kMinute + 998), 2000U); // quiet since the start at 10 min + 999 ms
    EXPECT_EQ(delays.NextMs(30 * kMinute + 2998), 0U);
    EXPECT_EQ(delays.NextMs(30 * kMinute + 3000), 1000U);
}

TEST(StartDelays, First_end_is_never_waited_for_however_late_it_comes)
{
    StartDelays delays;
    EXPECT_EQ(delays.NextMs(1000 * kMinute), 0U);
}

} // namespace
} // namespace vqrx::test
