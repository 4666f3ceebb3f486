#include "RunOfProcess.h"

#include <gtest/gtest.h>

#include <cstdint>

namespace vqrx::test {
namespace {

using client::v0::IsRunOf;
using client::v0::ProcessInterval;
using client::v0::SupervisorRun;

constexpr std::int64_t kCreatedMs = 1'000'000'000'000;

// Makes a run whose first record, number 100, says that the supervision has started.
SupervisorRun RunFrom(std::int64_t startedMs, std::int64_t lastMs)
{
    SupervisorRun run;
    run.firstMs = startedMs;
    run.startedMs = startedMs;
    run.lastMs = lastMs;
    run.beginningSeen = true;
    run.firstNumber = 100;
    return run;
}

TEST(RunOfProcess, A_run_that_begins_with_the_process_is_that_of_the_process)
{
    EXPECT_TRUE(IsRunOf(RunFrom(kCreatedMs + 300, kCreatedMs + 300), {kCreatedMs, {}, {}}));
    EXPECT_TRUE(IsRunOf(RunFrom(kCreatedMs - 1000, kCreatedMs - 1000), {kCreatedMs, {}, {}}));
    EXPECT_FALSE(IsRunOf(RunFrom(kCreatedMs - 60000, kCreatedMs - 1001), {kCreatedMs, {}, {}}));
}

TEST(RunOfProcess, Any_run_can_be_that_of_a_process_whose_creation_is_not_known)
{
    EXPECT_TRUE(IsRunOf(RunFrom(1, 1), {}));
}

TEST(RunOfProcess, A_later_record_proves_the_run_if_the_clock_was_set_back_during_the_start)
{
    const std::int64_t startedMs = kCreatedMs - 20000;
    EXPECT_FALSE(IsRunOf(RunFrom(startedMs, kCreatedMs - 1001), {kCreatedMs, {}, {}}));
    EXPECT_TRUE(IsRunOf(RunFrom(startedMs, kCreatedMs - 1000), {kCreatedMs, {}, {}}));
}

TEST(RunOfProcess, The_first_record_proves_the_run_if_the_clock_was_set_back_after_it)
{
    SupervisorRun run = RunFrom(kCreatedMs - 20000, kCreatedMs - 20000);
    run.firstMs = kCreatedMs;
    EXPECT_TRUE(IsRunOf(run, {kCreatedMs, {}, {}}));
    run.firstMs = kCreatedMs - 1001;
    EXPECT_FALSE(IsRunOf(run, {kCreatedMs, {}, {}}));
}

// A supervisor whose daemons run for months writes no record after their starts.
TEST(RunOfProcess,
     A_child_of_the_process_proves_the_run_that_shows_its_start_whatever_the_clock_says)
{
    constexpr std::int64_t loggedMs = kCreatedMs - 19000;
    SupervisorRun run = RunFrom(kCreatedMs - 20000, loggedMs);
    ProcessInterval& started = run.daemons[0].intervals.emplace_back();
    started.processId = 12;
    started.startMs = loggedMs;
    const auto isProvedBy = [&](std::uint32_t processId, std::int64_t createdMs) {
        return IsRunOf(run, {kCreatedMs, {}, {{7, loggedMs}, {processId, createdMs}}});
    };
    EXPECT_TRUE(isProvedBy(12, loggedMs));
    EXPECT_TRUE(isProvedBy(12, loggedMs + 1000));
    EXPECT_FALSE(isProvedBy(12, loggedMs + 1001)); // another process that got the id later
    EXPECT_TRUE(isProvedBy(12, loggedMs - 60000));
    EXPECT_FALSE(isProvedBy(12, loggedMs - 60001));
    EXPECT_FALSE(isProvedBy(13, loggedMs));
    started.attached = true; // the child of another process
    EXPECT_FALSE(isProvedBy(12, loggedMs));
    started.attached = false;
    started.endMs = loggedMs;
    EXPECT_FALSE(isProvedBy(12, loggedMs));
}

TEST(RunOfProcess,
     A_start_after_the_records_before_the_process_proves_the_run_whatever_the_clock_says)
{
    SupervisorRun run = RunFrom(kCreatedMs - 20000, kCreatedMs - 20000);
    EXPECT_TRUE(IsRunOf(run, {kCreatedMs, 99, {}}));
    EXPECT_FALSE(IsRunOf(run, {kCreatedMs, 100, {}}));
    run.beginningSeen = false; // the records of the run before may be overwritten up to here
    EXPECT_FALSE(IsRunOf(run, {kCreatedMs, 99, {}}));
}

} // namespace
} // namespace vqrx::test
