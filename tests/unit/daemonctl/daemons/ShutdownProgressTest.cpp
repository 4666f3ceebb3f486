#include "ShutdownProgress.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>

namespace vqrx::test {
namespace {

using client::v0::DescribeEnd;
using client::v0::DescribeShutdown;
using client::v0::NamesOf;
using client::v0::ProcessFacts;
using client::v0::RunMark;
using client::v0::ShowsOrder;
using client::v0::SupervisorRun;
using client::v0::Timeline;
using testing::StartsWith;

const RunMark kThisRun{5000, true, 1, 7};

// The end of the run of kThisRun.
SupervisorRun Ended()
{
    SupervisorRun run;
    run.startedMs = 5000;
    run.endSeen = true;
    return run;
}

TEST(ShutdownProgress, names_what_the_log_shows_and_nothing_else)
{
    Timeline timeline;
    EXPECT_THAT(DescribeShutdown(timeline, kThisRun),
                StartsWith("Its log does not show the order"));
    timeline.runs.resize(2);
    timeline.runs.front() = Ended();
    timeline.runs.front().exitRequested = true;
    EXPECT_FALSE(ShowsOrder(timeline, kThisRun));
    EXPECT_THAT(DescribeShutdown(timeline, kThisRun),
                StartsWith("Its log does not show the order"));
    timeline.runs.back() = Ended();
    timeline.runs.back().endSeen = false;
    timeline.runs.back().exitRequested = true;
    EXPECT_TRUE(ShowsOrder(timeline, kThisRun));
    EXPECT_FALSE(ShowsOrder(timeline, {}));
    EXPECT_THAT(
        DescribeShutdown(timeline, kThisRun),
        StartsWith("It waits for a call of a client that is under way, such as a stop, or for "
                   "the end of a pass"));
    timeline.runs.back().endSeen = true;
    EXPECT_THAT(DescribeShutdown(timeline, kThisRun), StartsWith("It no longer restarts daemons"));
    timeline.runs.back().exitRequested = false; // Ctrl+C came first
    EXPECT_TRUE(ShowsOrder(timeline, kThisRun));
}

TEST(ShutdownProgress, counts_the_daemons_that_nobody_watches_after_the_end)
{
    Timeline timeline;
    EXPECT_EQ(DescribeEnd(timeline, kThisRun), "the supervisor has ended; its daemons run on");
    timeline.runs.resize(1); // killed: the log shows no end
    EXPECT_EQ(DescribeEnd(timeline, kThisRun), "the supervisor has ended; its daemons run on");
    timeline.runs.back() = Ended();
    EXPECT_EQ(DescribeEnd(timeline, kThisRun), "the supervisor has ended; it had no daemons");
    timeline.runs.back().stillRegistered = 1;
    EXPECT_EQ(
        DescribeEnd(timeline, kThisRun),
        "the supervisor has ended; 1 daemon is no longer watched; what runs on: daemonctl ps");
    timeline.runs.back().stillRegistered = 3;
    EXPECT_EQ(
        DescribeEnd(timeline, kThisRun),
        "the supervisor has ended; 3 daemons are no longer watched; what runs on: daemonctl ps");
}

// The log may lack all records of the supervisor that ended, for example because it was locked.
TEST(ShutdownProgress, does_not_take_the_end_of_a_former_run_for_this_one)
{
    Timeline timeline;
    timeline.runs.push_back(Ended());
    timeline.runs.back().stillRegistered = 3;
    const RunMark other{9000, true, 1, 2};
    EXPECT_EQ(DescribeEnd(timeline, other), "the supervisor has ended; its daemons run on");
    EXPECT_EQ(DescribeEnd(timeline, std::nullopt), "the supervisor has ended; its daemons run on");
    EXPECT_THAT(DescribeShutdown(timeline, other), StartsWith("Its log does not show the order"));
}

TEST(ShutdownProgress, names_each_process_and_its_program_if_it_is_known)
{
    ProcessFacts known;
    known.processId = 12;
    known.image = "C:\\App\\DaemonManager.exe";
    ProcessFacts hidden;
    hidden.processId = 15;
    EXPECT_EQ(NamesOf({known, hidden}), "process 12 (C:\\App\\DaemonManager.exe), process 15");
}

} // namespace
} // namespace vqrx::test
