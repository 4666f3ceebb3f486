#include "DaemonEvents.h"

#include "LogOfRecords.h"

#include <gtest/gtest.h>

namespace vqrx::test {
namespace {

using client::v0::Attribution;
using client::v0::DaemonHistory;
using client::v0::DaemonState;
using client::v0::IntervalEnd;
using client::v0::SupervisorRun;
using client::v0::Timeline;

TEST(DaemonEvents, holds_the_intervals_of_a_daemons_processes_and_their_ends)
{
    const Timeline timeline = LogOfRecords()
                                  .StartUp() // 1 to 4 s
                                  .Add("Start DaemonId(0) PId(10) : a.exe ", 2)
                                  .Add("Exception caught in : Access violation", 0)
                                  .Add("Start DaemonId(0) PId(11) : a.exe ")
                                  .Build();
    ASSERT_EQ(timeline.runs.size(), 1U);
    EXPECT_TRUE(timeline.runs[0].beginningSeen);
    const DaemonHistory* const daemon = timeline.runs[0].Find(0);
    ASSERT_NE(daemon, nullptr);
    EXPECT_EQ(daemon->command, "a.exe ");
    EXPECT_TRUE(daemon->beginningSeen);
    EXPECT_EQ(daemon->state, DaemonState::kRunning);
    EXPECT_EQ(daemon->Restarts(), 1U);
    ASSERT_EQ(daemon->intervals.size(), 2U);
    EXPECT_EQ(daemon->intervals[0].processId, 10U);
    EXPECT_EQ(daemon->intervals[0].startMs, 5000);
    EXPECT_EQ(daemon->intervals[0].endMs, 6000);
    EXPECT_EQ(daemon->intervals[0].end, IntervalEnd::kEnded);
    EXPECT_EQ(daemon->intervals[0].reason, "Access violation");
    EXPECT_EQ(daemon->intervals[0].attribution, Attribution::kPaired);
    ASSERT_NE(daemon->Running(), nullptr);
    EXPECT_EQ(daemon->Running()->processId, 11U);
    EXPECT_EQ(daemon->LastEnded()->processId, 10U);
}

TEST(DaemonEvents,
     counts_the_first_start_that_is_left_as_a_restart_if_an_earlier_one_is_overwritten)
{
    LogOfRecords log;
    log.Add("Start DaemonId(0) PId(10) : a.exe "); // level 1: not the first start
    EXPECT_EQ(log.Build().runs[0].Find(0)->Restarts(), 1U);
    log.Add("Exception caught in : Access violation", 0).Add("Start DaemonId(0) PId(11) : a.exe ");
    EXPECT_EQ(log.Build().runs[0].Find(0)->Restarts(), 2U);
}

TEST(DaemonEvents, shows_that_a_daemon_cannot_start)
{
    const Timeline timeline = LogOfRecords()
                                  .StartUp()
                                  .Add("Start DaemonId(0) PId(10) : a.exe ", 2)
                                  .Add("Exception caught in : Unknown (0x0)", 0)
                                  .Add("Unable to start DaemonId(0) PId(10) : a.exe ")
                                  .Add("Unable to start DaemonId(0) PId(10) : a.exe ")
                                  .Build();
    const DaemonHistory* const daemon = timeline.runs[0].Find(0);
    EXPECT_EQ(daemon->state, DaemonState::kCannotStart);
    EXPECT_EQ(daemon->failedStarts.size(), 2U);
    EXPECT_EQ(daemon->intervals.size(), 1U);
    EXPECT_EQ(daemon->Running(), nullptr);
}

TEST(DaemonEvents, moves_failed_starts_to_the_daemon_when_its_id_becomes_known)
{
    LogOfRecords log;
    log.StartUp().Add("Unable to start a.exe ").Add("Unable to start a.exe ");
    EXPECT_EQ(log.Build().runs[0].neverStarted.at("a.exe ").size(), 2U);
    const Timeline timeline = log.Add("Start DaemonId(5) PId(10) : a.exe ", 1).Build();
    EXPECT_TRUE(timeline.runs[0].neverStarted.empty());
    EXPECT_EQ(timeline.runs[0].Find(5)->failedStarts.size(), 2U);
    EXPECT_TRUE(timeline.runs[0].Find(5)->beginningSeen);
}

TEST(DaemonEvents, shows_stops_and_detaches)
{
    const Timeline timeline = LogOfRecords()
                                  .StartUp()
                                  .Add("Start DaemonId(0) PId(10) : a.exe ", 2)
                                  .Add("Attach DaemonId(1) PId(11) : b.exe ", 2)
                                  .Add("Start DaemonId(2) PId(12) : c.exe ", 2)
                                  .Add("Stop (2) DaemonId(0) PId(10) : a.exe ")
                                  .Add("Detached DaemonId(1) PId(11) : b.exe ")
                                  .Add("Unable to stop DaemonId(2) PId(12) : c.exe ")
                                  .Build();
    const SupervisorRun& run = timeline.runs[0];
    EXPECT_EQ(run.Find(0)->state, DaemonState::kStopped);
    EXPECT_EQ(run.Find(0)->intervals[0].end, IntervalEnd::kStopped);
    EXPECT_EQ(run.Find(0)->intervals[0].stopMethod, 2U);
    EXPECT_FALSE(run.Find(0)->IsRegistered());
    EXPECT_TRUE(run.Find(1)->attached);
    EXPECT_TRUE(run.Find(1)->intervals[0].attached);
    EXPECT_EQ(run.Find(1)->intervals[0].end, IntervalEnd::kDetached);
    EXPECT_EQ(run.Find(2)->intervals[0].end, IntervalEnd::kStopFailed);
}

TEST(DaemonEvents, shows_which_beginnings_the_log_no_longer_holds)
{
    const Timeline timeline = LogOfRecords()
                                  .Add("Exception caught in : Unknown (0x1)", 0)
                                  .Add("Start DaemonId(4) PId(41) : a.exe ")
                                  .Add("Start DaemonId(5) PId(51) : b.exe ")
                                  .Build();
    EXPECT_FALSE(timeline.runs[0].beginningSeen);
    const DaemonHistory* const daemon = timeline.runs[0].Find(4);
    ASSERT_EQ(daemon->intervals.size(), 2U);
    EXPECT_FALSE(daemon->intervals[0].startSeen);
    EXPECT_EQ(daemon->intervals[0].startMs, 1000);
    EXPECT_EQ(daemon->intervals[0].endMs, 1000);
    EXPECT_FALSE(daemon->beginningSeen);
    EXPECT_FALSE(timeline.runs[0].Find(5)->beginningSeen);
}

TEST(DaemonEvents, ends_an_interval_without_end_message_at_the_next_start)
{
    const Timeline timeline = LogOfRecords()
                                  .StartUp()
                                  .Add("Start DaemonId(0) PId(10) : a.exe ", 2)
                                  .Add("Start DaemonId(0) PId(11) : a.exe ")
                                  .Build();
    EXPECT_EQ(timeline.runs[0].Find(0)->intervals[0].end, IntervalEnd::kLost);
    EXPECT_EQ(timeline.runs[0].Find(0)->intervals[0].endMs, 6000);
}

TEST(DaemonEvents, tells_services_from_programs_by_the_command)
{
    const Timeline timeline = LogOfRecords()
                                  .StartUp()
                                  .Add("Attach DaemonId(0) PId(10) : Spooler", 2)
                                  .Add("Attach DaemonId(1) PId(11) : b.exe ", 2)
                                  .Build();
    EXPECT_TRUE(timeline.runs[0].Find(0)->IsService());
    EXPECT_FALSE(timeline.runs[0].Find(1)->IsService());
}

} // namespace
} // namespace vqrx::test
