#include "ShutdownProgress.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace vqrx::test {
namespace {

using client::v0::DescribeEnd;
using client::v0::DescribeShutdown;
using client::v0::NamesOf;
using client::v0::ProcessFacts;
using client::v0::SupervisorRun;
using client::v0::Timeline;
using testing::StartsWith;

TEST(ShutdownProgress, names_a_call_of_a_client_until_the_log_shows_the_end_of_supervision)
{
    Timeline timeline;
    EXPECT_THAT(DescribeShutdown(timeline), StartsWith("A call of a client is under way"));
    timeline.runs.resize(2);
    timeline.runs.front().endSeen = true;
    EXPECT_THAT(DescribeShutdown(timeline), StartsWith("A call of a client is under way"));
    timeline.runs.back().endSeen = true;
    EXPECT_THAT(DescribeShutdown(timeline), StartsWith("It no longer restarts daemons"));
}

TEST(ShutdownProgress, counts_the_daemons_that_run_on_after_the_end)
{
    Timeline timeline;
    EXPECT_EQ(DescribeEnd(timeline), "the supervisor has ended; its daemons run on");
    timeline.runs.resize(1); // killed: the log shows no end
    EXPECT_EQ(DescribeEnd(timeline), "the supervisor has ended; its daemons run on");
    timeline.runs.back().endSeen = true;
    EXPECT_EQ(DescribeEnd(timeline), "the supervisor has ended; it had no daemons");
    timeline.runs.back().stillRegistered = 1;
    EXPECT_EQ(DescribeEnd(timeline), "the supervisor has ended; 1 daemon runs on without it");
    timeline.runs.back().stillRegistered = 3;
    EXPECT_EQ(DescribeEnd(timeline), "the supervisor has ended; 3 daemons run on without it");
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
