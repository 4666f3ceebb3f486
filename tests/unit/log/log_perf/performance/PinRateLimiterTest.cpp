#include "log_perf/performance/PinRateLimiter.h"

#include <gtest/gtest.h>

namespace vqrx::test {
namespace {

using log::log_perf::v2::PinRateLimiter;

TEST(PinRateLimiter, The_first_window_of_silence_begins_at_construction)
{
    PinRateLimiter limiter(10000, 500);
    EXPECT_EQ(0U, limiter.Notice(500));
    EXPECT_EQ(0U, limiter.Notice(10499));
    EXPECT_EQ(3U, limiter.Notice(10500));
}

TEST(PinRateLimiter, Of_five_notices_in_a_window_one_is_logged_and_the_next_line_stands_for_five)
{
    PinRateLimiter limiter(10000, 0);
    EXPECT_EQ(1U, limiter.Notice(10000));
    EXPECT_EQ(0U, limiter.Notice(10000));
    EXPECT_EQ(0U, limiter.Notice(12000));
    EXPECT_EQ(0U, limiter.Notice(15000));
    EXPECT_EQ(0U, limiter.Notice(19999));
    EXPECT_EQ(5U, limiter.Notice(20000));
    EXPECT_EQ(0U, limiter.Notice(20001));
    EXPECT_EQ(2U, limiter.Notice(30000));
}

TEST(PinRateLimiter, The_window_has_its_length_across_the_wrap_of_the_tick)
{
    PinRateLimiter limiter(10000, 0xFFFFFFFF - 999);
    EXPECT_EQ(0U, limiter.Notice(8999));
    EXPECT_EQ(2U, limiter.Notice(9000));
}

} // namespace
} // namespace vqrx::test
