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
using client::v0::SupervisorRun;
using client::v0::Timeline;
using testing::StartsWith;

const RunMark kThisRun{5000, true, 7};

// The end of the run of kThisRun.
SupervisorRun Ended()
{
    SupervisorRun run;
    run.startedMs = 5000;
    run.endSeen = true;
    return run;
}

TEST(ShutdownProgress, names_a_call_of_a_client_until_the_log_shows_the_end_of_supervision)
{
    Timeline timeline;
    EXPECT_THAT(DescribeShutdown(timeline, kThisRun),
                StartsWith("A call of a client is under way"));
    timeline.runs.resize(2);
    timeline.runs.front() = Ended();
    EXPECT_THAT(DescribeShutdown(timeline, kThisRun),
                StartsWith("A call of a client is under way"));
    timeline.runs.back() = Ended();
    EXPECT_THAT(DescribeShutdown(timeline, kThisRun), StartsWith("It no longer restarts daemons"));
}

TEST(ShutdownProgress, counts_the_daemons_that_run_on_after_the_end)
{
    Timeline timeline;
    EXPECT_EQ(DescribeEnd(timeline, kThisRun), "the supervisor has ended; its daemons run on");
    timeline.runs.resize(1); // killed: the log shows no end
    EXPECT_EQ(DescribeEnd(timeline, kThisRun), "the supervisor has ended; its daemons run on");
    timeline.runs.back() = Ended();
    EXPECT_EQ(DescribeEnd(timeline, kThisRun), "the supervisor has ended; it had no daemons");
    timeline.runs.back().stillRegistered = 1;
    EXPECT_EQ(DescribeEnd(timeline, kThisRun),
              "the supervisor has ended; 1 daemon runs on without it");
    timeline.runs.back().stillRegistered = 3;
    EXPECT_EQ(DescribeEnd(timeline, kThisRun),
              "the supervisor has ended; 3 daemons run on without it");
}

// The log may lack all records of the supervisor that ended, for example because it was locked.
TEST(ShutdownProgress, does_not_take_the_end_of_a_former_run_for_this_one)
{
    Timeline timeline;
    timeline.runs.push_back(Ended());
    timeline.runs.back().stillRegistered = 3;
    const RunMark other{9000, true, 2};
    EXPECT_EQ(DescribeEnd(timeline, other), "the supervisor has ended; its daemons run on");
    EXPECT_EQ(DescribeEnd(timeline, std::nullopt), "the supervisor has ended; its daemons run on");
    EXPECT_THAT(DescribeShutdown(timeline, other), StartsWith("A call of a client is under way"));
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
