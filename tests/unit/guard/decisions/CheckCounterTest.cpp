#include "CheckCounter.h"

#include <gtest/gtest.h>

namespace vqrx::test {
namespace {

using guard::v0::CheckCounter;
using guard::v0::CheckResult;

// Returns after how many equal results the supervisor hangs; 0 if it does not within 1000.
int ChecksUntilHang(CheckResult result)
{
    CheckCounter counter;
    for (int checks = 1; checks <= 1000; ++checks) {
        if (counter.Notice(result)) {
            return checks;
        }
    }
    return 0;
}

TEST(CheckCounter, Three_silent_checks_mean_that_the_supervisor_hangs)
{
    EXPECT_EQ(ChecksUntilHang(CheckResult::kSilent), 3);
}

TEST(CheckCounter, Busy_and_withdrawn_supervisors_get_more_time)
{
    EXPECT_EQ(ChecksUntilHang(CheckResult::kBusy), 15);
    EXPECT_EQ(ChecksUntilHang(CheckResult::kWithdrawn), 15);
}

TEST(CheckCounter, Supervisor_that_answers_or_cannot_be_asked_does_not_hang)
{
    EXPECT_EQ(ChecksUntilHang(CheckResult::kAnswers), 0);
    EXPECT_EQ(ChecksUntilHang(CheckResult::kUnknown), 0);
    EXPECT_EQ(ChecksUntilHang(CheckResult::kStranger), 0);
}

TEST(CheckCounter, Only_checks_one_after_the_other_count)
{
    CheckCounter counter;
    for (const CheckResult between :
         {CheckResult::kAnswers, CheckResult::kBusy, CheckResult::kUnknown}) {
        EXPECT_FALSE(counter.Notice(CheckResult::kSilent));
        EXPECT_FALSE(counter.Notice(CheckResult::kSilent));
        EXPECT_EQ(counter.Count(), 2U);
        EXPECT_FALSE(counter.Notice(between));
        EXPECT_EQ(counter.Count(), 1U);
    }
}

} // namespace
} // namespace vqrx::test
