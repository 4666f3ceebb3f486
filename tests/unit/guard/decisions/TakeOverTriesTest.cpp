#include "TakeOverTries.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

namespace vqrx::test {
namespace {

using guard::v0::TakeOverTries;

std::vector<std::uint32_t> Waits(TakeOverTries& tries, int count)
{
    std::vector<std::uint32_t> waits;
    for (int index = 0; index < count; ++index) {
        waits.push_back(tries.NextMs());
    }
    return waits;
}

TEST(TakeOverTries, Waits_double_to_a_minute_and_become_ten_minutes_after_an_hour)
{
    TakeOverTries tries;
    EXPECT_EQ(Waits(tries, 9), (std::vector<std::uint32_t>{1000, 2000, 4000, 8000, 16000, 32000,
                                                           60000, 60000, 60000}));
    EXPECT_EQ(Waits(tries, 60), std::vector<std::uint32_t>(60, 60000));
    EXPECT_EQ(Waits(tries, 1000), std::vector<std::uint32_t>(1000, 600000));
}

TEST(TakeOverTries, The_tenth_try_alone_is_reported)
{
    TakeOverTries tries;
    for (int number = 1; number <= 1000; ++number) {
        static_cast<void>(tries.NextMs());
        EXPECT_EQ(tries.IsToBeReported(), number == 10) << number;
    }
}

TEST(TakeOverTries, A_shorter_wait_bounds_all_waits)
{
    TakeOverTries tries(10);
    EXPECT_EQ(Waits(tries, 2), (std::vector<std::uint32_t>{10, 10}));
}

} // namespace
} // namespace vqrx::test
