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

TEST(CheckCounter, An_answer_begins_the_counts_again)
{
    CheckCounter counter;
    for (int round = 0; round < 3; ++round) {
        EXPECT_FALSE(counter.Notice(CheckResult::kSilent));
        EXPECT_FALSE(counter.Notice(CheckResult::kSilent));
        EXPECT_EQ(counter.Count(), 2U);
        EXPECT_FALSE(counter.Notice(CheckResult::kAnswers));
    }
}

TEST(CheckCounter, Other_bad_results_do_not_begin_the_count_of_silent_checks_again)
{
    for (const CheckResult between : {CheckResult::kBusy, CheckResult::kWithdrawn,
                                      CheckResult::kStranger, CheckResult::kUnknown}) {
        CheckCounter counter;
        EXPECT_FALSE(counter.Notice(CheckResult::kSilent));
        EXPECT_FALSE(counter.Notice(between));
        EXPECT_FALSE(counter.Notice(CheckResult::kSilent));
        EXPECT_EQ(counter.Count(), 2U);
        EXPECT_FALSE(counter.Notice(between));
        EXPECT_TRUE(counter.Notice(CheckResult::kSilent));
        EXPECT_EQ(counter.Count(), 3U);
    }
}

TEST(CheckCounter, Supervisor_that_is_busy_and_withdrawn_in_turn_hangs_after_fifteen_checks)
{
    CheckCounter counter;
    EXPECT_FALSE(counter.Notice(CheckResult::kSilent));
    for (int checks = 2; checks < 15; ++checks) {
        EXPECT_FALSE(
            counter.Notice(checks % 2 == 0 ? CheckResult::kBusy : CheckResult::kWithdrawn));
    }
    EXPECT_EQ(counter.Count(), 14U);
    EXPECT_TRUE(counter.Notice(CheckResult::kBusy));
}

} // namespace
} // namespace vqrx::test
