#include "CheckSchedule.h"

#include "CheckCounter.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>

namespace vqrx::test {
namespace {

using guard::v0::CheckCounter;
using guard::v0::CheckResult;
using guard::v0::CheckSchedule;

constexpr std::uint64_t kIntervalMs = 10000;
constexpr std::uint64_t kAnswerLimitMs = 10000;
constexpr std::uint64_t kLookMs = 100;

// Watches a supervisor that answers at once until it hangs.
// @return how long it had hung when that was found, milliseconds
std::uint64_t TimeUntilFound(std::uint64_t hangsAtMs, CheckResult result)
{
    CheckCounter counter;
    CheckSchedule schedule(kIntervalMs, 0);
    for (std::uint64_t nowMs = kLookMs;; nowMs += kLookMs) {
        if (!schedule.BeginIfDue(nowMs)) {
            continue;
        }
        const bool hangs = nowMs >= hangsAtMs;
        nowMs += hangs ? kAnswerLimitMs : 0;
        if (counter.Notice(hangs ? result : CheckResult::kAnswers)) {
            return nowMs - hangsAtMs;
        }
    }
}

TEST(CheckSchedule, Check_is_due_one_interval_after_the_begin_of_the_one_before)
{
    CheckSchedule schedule(kIntervalMs, 500);
    EXPECT_FALSE(schedule.BeginIfDue(10499));
    EXPECT_TRUE(schedule.BeginIfDue(10500));
    EXPECT_FALSE(schedule.BeginIfDue(20499));
    EXPECT_TRUE(schedule.BeginIfDue(20600));
    EXPECT_FALSE(schedule.BeginIfDue(30500));
    EXPECT_TRUE(schedule.BeginIfDue(30600));
}

TEST(CheckSchedule, Hang_is_found_after_30_to_40_seconds)
{
    std::uint64_t shortest = UINT64_MAX;
    std::uint64_t longest = 0;
    for (std::uint64_t hangsAtMs = 60000; hangsAtMs < 60000 + kIntervalMs; ++hangsAtMs) {
        const std::uint64_t foundMs = TimeUntilFound(hangsAtMs, CheckResult::kSilent);
        shortest = std::min(shortest, foundMs);
        longest = std::max(longest, foundMs);
    }
    EXPECT_EQ(shortest, 30000 + 2 * kLookMs);
    EXPECT_EQ(longest, 39999 + 2 * kLookMs);
}

// A pass that starts many programs may take long, and a supervisor that ends takes up to 100 s.
TEST(CheckSchedule, Busy_supervisor_has_150_seconds)
{
    EXPECT_EQ(TimeUntilFound(60000, CheckResult::kBusy), 150000 + 14 * kLookMs);
}

} // namespace
} // namespace vqrx::test
