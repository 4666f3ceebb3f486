#include "TimelineBuilder.h"

#include "LogOfRecords.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace vqrx::test {
namespace {

using client::v0::BuildTimeline;
using client::v0::DaemonState;
using client::v0::GapKind;
using client::v0::IntervalEnd;
using client::v0::SupervisorRun;
using client::v0::Timeline;

TEST(TimelineBuilder, of_no_records_is_empty)
{
    const Timeline timeline = BuildTimeline({});
    EXPECT_TRUE(timeline.runs.empty());
    EXPECT_EQ(timeline.records, 0U);
}

TEST(TimelineBuilder, begins_a_run_at_a_start_up_after_a_supervisor_was_killed)
{
    LogOfRecords log;
    log.StartUp().Add("Start DaemonId(0) PId(10) : a.exe ", 2);
    log.StartUp().Add("Start DaemonId(0) PId(20) : other.exe ", 2);
    const Timeline timeline = log.Build();
    ASSERT_EQ(timeline.runs.size(), 2U);
    EXPECT_FALSE(timeline.runs[0].endSeen);
    EXPECT_EQ(timeline.runs[0].lastMs, 5000);
    EXPECT_EQ(timeline.runs[0].Find(0)->intervals[0].end, IntervalEnd::kSupervisorGone);
    EXPECT_FALSE(timeline.runs[0].Find(0)->intervals[0].endMs);
    EXPECT_EQ(timeline.runs[1].firstMs, 6000);
    EXPECT_EQ(timeline.runs[1].Find(0)->command, "other.exe ");
    EXPECT_EQ(timeline.runs[1].Find(0)->intervals[0].end, IntervalEnd::kRunning);
}

TEST(TimelineBuilder, keeps_messages_about_com_security_in_one_run)
{
    LogOfRecords log;
    log.StartUp()
        .Add("Start DaemonId(0) PId(10) : a.exe ", 2)
        .Add("Detected Windows Firewall with Advanced Security", 2)
        .Add("CoInitializeSecurity error Access is denied.", 0)
        .Add("Deamon Thread started", 2)
        .Add("CoInitializeSecurity error Access is denied.", 0);
    const Timeline timeline = log.Build();
    ASSERT_EQ(timeline.runs.size(), 2U);
    EXPECT_EQ(timeline.runs[1].firstMs, 6000);
    EXPECT_TRUE(timeline.runs[1].beginningSeen);
    log.Add("Deamon Thread is exiting...", 2)
        .Add("CoInitializeSecurity error Access is denied.", 0)
        .Add("Deamon Thread started", 2);
    EXPECT_EQ(log.Build().runs.size(), 3U);
}

TEST(TimelineBuilder, keeps_a_failed_publication_before_supervision_in_one_run)
{
    const Timeline timeline = LogOfRecords()
                                  .Add("Connecting to WMI resource ...", 2)
                                  .Add("Connected to WMI resource", 2)
                                  .Add("RotRegistration errror Access is denied.", 0)
                                  .Add("Deamon Thread started", 2)
                                  .Build();
    EXPECT_EQ(timeline.runs.size(), 1U);
}

TEST(TimelineBuilder, begins_a_run_if_supervision_continues_after_an_end)
{
    const std::vector<std::string> lines = {
        "Start DaemonId(0) PId(10) : a.exe ",
        "Unable to start a.exe ",
        "Exception caught in : Unknown (0x1)",
        "Attach DaemonId(0) PId(10) : a.exe ",
        "Unable to attach DaemonId(0) PId(10) : ",
        "Detached DaemonId(0) PId(10) : a.exe ",
        "Stop (0) DaemonId(0) PId(10) : a.exe ",
        "Unable to stop DaemonId(0) PId(10) : a.exe ",
        "CoInitializeSecurity error Access is denied.",
    };
    for (const std::string& line : lines) {
        const Timeline timeline = LogOfRecords()
                                      .Add("Deamon Thread started", 2)
                                      .Add("Deamon Thread is exiting...", 2)
                                      .Add(line)
                                      .Build();
        ASSERT_EQ(timeline.runs.size(), 2U) << line;
        EXPECT_TRUE(timeline.runs[0].endSeen) << line;
        EXPECT_FALSE(timeline.runs[1].endSeen) << line;
    }
}

TEST(TimelineBuilder, keeps_a_stop_that_finishes_after_the_end_of_its_run_in_that_run)
{
    LogOfRecords log;
    log.StartUp()
        .Add("Start DaemonId(0) PId(10) : a.exe ", 2)
        .Add("Deamon Thread is exiting...", 2)
        .Add("Stop (2) DaemonId(0) PId(10) : a.exe ");
    ASSERT_EQ(log.Build().runs.size(), 1U);
    EXPECT_EQ(log.Build().runs[0].Find(0)->state, DaemonState::kStopped);
    log.Add("Stop (2) DaemonId(0) PId(10) : a.exe "); // the process has its end already
    EXPECT_EQ(log.Build().runs.size(), 2U);
}

TEST(TimelineBuilder, keeps_an_attach_that_finishes_after_the_end_of_its_run_in_that_run)
{
    const Timeline timeline = LogOfRecords()
                                  .StartUp()
                                  .Add("Start DaemonId(0) PId(10) : a.exe ", 2)
                                  .Add("Deamon Thread is exiting...", 2)
                                  .Add("Attach DaemonId(1) PId(11) : b.exe ", 2)
                                  .Build();
    ASSERT_EQ(timeline.runs.size(), 1U);
    EXPECT_TRUE(timeline.runs[0].endSeen);
    EXPECT_NE(timeline.runs[0].Find(1), nullptr);
}

TEST(TimelineBuilder, shows_an_exit_and_how_many_daemons_were_registered)
{
    const Timeline timeline = LogOfRecords()
                                  .StartUp()
                                  .Add("Start DaemonId(0) PId(10) : a.exe ", 2)
                                  .Add("Exit", 2)
                                  .Add("1 Processes still registered")
                                  .Add("Deamon Thread is exiting...", 2)
                                  .Build();
    const SupervisorRun& run = timeline.runs[0];
    EXPECT_TRUE(run.endSeen);
    EXPECT_TRUE(run.exitRequested);
    EXPECT_EQ(run.stillRegistered, 1U);
    EXPECT_EQ(run.Find(0)->state, DaemonState::kRunning);
    EXPECT_EQ(run.Find(0)->intervals[0].end, IntervalEnd::kSupervisorGone);
}

TEST(TimelineBuilder, keeps_ends_of_unknown_daemons)
{
    const Timeline timeline = LogOfRecords()
                                  .StartUp()
                                  .Add("Exception caught in : Unknown (0x1)", 0)
                                  .Add("Exception caught in : Unknown (0x2)", 0)
                                  .Add("Start DaemonId(4) PId(41) : a.exe ")
                                  .Build();
    ASSERT_EQ(timeline.runs[0].unknownEnds.size(), 1U);
    EXPECT_EQ(timeline.runs[0].unknownEnds[0].reason, "Unknown (0x1)");
}

TEST(TimelineBuilder, shows_gaps_within_a_run_only)
{
    LogOfRecords log;
    log.StartUp().Number(10).Add("Exit").Add("Overflowed message queue.", 0).Add("later");
    log.Number(3).StartUp().Number(99);
    const Timeline timeline = log.Add("Exit").Build();
    ASSERT_EQ(timeline.gaps.size(), 3U);
    EXPECT_EQ(timeline.gaps[0].kind, GapKind::kMissingNumbers);
    EXPECT_EQ(timeline.gaps[0].count, 6U);
    EXPECT_EQ(timeline.gaps[0].fromMs, 4000);
    EXPECT_EQ(timeline.gaps[0].toMs, 5000);
    EXPECT_EQ(timeline.gaps[1].kind, GapKind::kQueueOverflow);
    EXPECT_EQ(timeline.gaps[1].fromMs, 6000);
    EXPECT_EQ(timeline.gaps[1].toMs, 7000);
    EXPECT_EQ(timeline.gaps[2].count, 92U);
}

TEST(TimelineBuilder, shows_an_outage_of_the_log_file_as_a_gap)
{
    const Timeline timeline =
        LogOfRecords()
            .StartUp()
            .Add("Log file a.log is written again. Messages missing in it: 7", 0)
            .Build();
    ASSERT_EQ(timeline.gaps.size(), 1U);
    EXPECT_EQ(timeline.gaps[0].kind, GapKind::kLogOutage);
    EXPECT_EQ(timeline.gaps[0].count, 7U);
    EXPECT_LT(timeline.gaps[0].fromMs, timeline.gaps[0].toMs);
}

// A second supervisor was started beside the running one, and refused.
TEST(TimelineBuilder, a_refused_supervisor_does_not_end_the_processes_of_the_running_one)
{
    const Timeline timeline = LogOfRecords()
                                  .StartUp()
                                  .Add("Start DaemonId(0) PId(10) : a.exe ", 2)
                                  .StartUp()
                                  .Add("Deamon Thread is exiting...", 2)
                                  .Build();
    ASSERT_EQ(timeline.runs.size(), 2U);
    EXPECT_EQ(timeline.runs[0].Find(0)->intervals[0].end, IntervalEnd::kRunning);
}

TEST(TimelineBuilder, shows_failed_attaches)
{
    const Timeline timeline =
        LogOfRecords().StartUp().Add("Unable to attach DaemonId(2) PId(77) :  ").Build();
    ASSERT_EQ(timeline.runs[0].failedAttaches.size(), 1U);
    EXPECT_EQ(timeline.runs[0].failedAttaches[0].processId, 77U);
    EXPECT_EQ(timeline.runs[0].Find(2), nullptr);
}

} // namespace
} // namespace vqrx::test
