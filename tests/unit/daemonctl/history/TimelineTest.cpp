#include "Timeline.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace vqrx::test {
namespace {

using client::v0::Attribution;
using client::v0::BuildTimeline;
using client::v0::DaemonHistory;
using client::v0::DaemonState;
using client::v0::GapKind;
using client::v0::LifeEnd;
using client::v0::Record;
using client::v0::SupervisorRun;
using client::v0::Timeline;

/// Records a second apart, numbered one after the other unless told.
class Log {
public:
    Log& Add(const std::string& text, int level = 1)
    {
        time_ += 1000;
        records_.push_back(Record{number_++, time_, level, "", text});
        return *this;
    }
    Log& StartUp()
    {
        return Add("Detected Windows Firewall with Advanced Security", 2)
            .Add("Connecting to WMI resource ...", 2)
            .Add("Connected to WMI resource", 2)
            .Add("Deamon Thread started", 2);
    }
    Log& Number(std::int64_t number)
    {
        number_ = number;
        return *this;
    }
    Timeline Build() const { return BuildTimeline(records_); }

private:
    std::vector<Record> records_;
    std::int64_t number_ = 0;
    std::int64_t time_ = 0;
};

TEST(Timeline, of_nothing_is_empty)
{
    const Timeline timeline = BuildTimeline({});
    EXPECT_TRUE(timeline.runs.empty());
    EXPECT_EQ(timeline.records, 0U);
}

TEST(Timeline, tells_the_lives_of_a_daemon_and_how_each_ended)
{
    const Timeline timeline = Log()
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
    ASSERT_EQ(daemon->lives.size(), 2U);
    EXPECT_EQ(daemon->lives[0].processId, 10U);
    EXPECT_EQ(daemon->lives[0].startMs, 5000);
    EXPECT_EQ(daemon->lives[0].endMs, 6000);
    EXPECT_EQ(daemon->lives[0].end, LifeEnd::kEnded);
    EXPECT_EQ(daemon->lives[0].reason, "Access violation");
    EXPECT_EQ(daemon->lives[0].attribution, Attribution::kPaired);
    ASSERT_NE(daemon->Running(), nullptr);
    EXPECT_EQ(daemon->Running()->processId, 11U);
    EXPECT_EQ(daemon->LastEnded()->processId, 10U);
}

TEST(Timeline, tells_when_a_daemon_cannot_start)
{
    const Timeline timeline = Log()
                                  .StartUp()
                                  .Add("Start DaemonId(0) PId(10) : a.exe ", 2)
                                  .Add("Exception caught in : Unknown (0x0)", 0)
                                  .Add("Unable to start DaemonId(0) PId(10) : a.exe ")
                                  .Add("Unable to start DaemonId(0) PId(10) : a.exe ")
                                  .Build();
    const DaemonHistory* const daemon = timeline.runs[0].Find(0);
    EXPECT_EQ(daemon->state, DaemonState::kCannotStart);
    EXPECT_EQ(daemon->failedStarts.size(), 2U);
    EXPECT_EQ(daemon->lives.size(), 1U);
    EXPECT_EQ(daemon->Running(), nullptr);
}

TEST(Timeline, gives_failed_starts_to_the_daemon_once_its_id_is_known)
{
    Log log;
    log.StartUp().Add("Unable to start a.exe ").Add("Unable to start a.exe ");
    EXPECT_EQ(log.Build().runs[0].neverStarted.at("a.exe ").size(), 2U);
    const Timeline timeline = log.Add("Start DaemonId(5) PId(10) : a.exe ", 1).Build();
    EXPECT_TRUE(timeline.runs[0].neverStarted.empty());
    EXPECT_EQ(timeline.runs[0].Find(5)->failedStarts.size(), 2U);
    EXPECT_TRUE(timeline.runs[0].Find(5)->beginningSeen);
}

TEST(Timeline, tells_stops_and_detaches)
{
    const Timeline timeline = Log()
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
    EXPECT_EQ(run.Find(0)->lives[0].end, LifeEnd::kStopped);
    EXPECT_EQ(run.Find(0)->lives[0].stopMethod, 2U);
    EXPECT_FALSE(run.Find(0)->IsRegistered());
    EXPECT_TRUE(run.Find(1)->attached);
    EXPECT_TRUE(run.Find(1)->lives[0].attached);
    EXPECT_EQ(run.Find(1)->lives[0].end, LifeEnd::kDetached);
    EXPECT_EQ(run.Find(2)->lives[0].end, LifeEnd::kStopFailed);
}

TEST(Timeline, begins_a_run_where_a_supervisor_starts_up_also_when_the_one_before_was_killed)
{
    Log log;
    log.StartUp().Add("Start DaemonId(0) PId(10) : a.exe ", 2);
    log.StartUp().Add("Start DaemonId(0) PId(20) : other.exe ", 2);
    const Timeline timeline = log.Build();
    ASSERT_EQ(timeline.runs.size(), 2U);
    EXPECT_FALSE(timeline.runs[0].endSeen);
    EXPECT_EQ(timeline.runs[0].lastMs, 5000);
    EXPECT_EQ(timeline.runs[0].Find(0)->lives[0].end, LifeEnd::kSupervisorGone);
    EXPECT_FALSE(timeline.runs[0].Find(0)->lives[0].endMs);
    EXPECT_EQ(timeline.runs[1].firstMs, 6000);
    EXPECT_EQ(timeline.runs[1].Find(0)->command, "other.exe ");
    EXPECT_EQ(timeline.runs[1].Find(0)->lives[0].end, LifeEnd::kRunning);
}

TEST(Timeline, is_one_run_when_com_security_failed)
{
    Log log;
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

TEST(Timeline, is_one_run_when_the_publication_fails_before_the_supervision_begins)
{
    const Timeline timeline = Log()
                                  .Add("Connecting to WMI resource ...", 2)
                                  .Add("Connected to WMI resource", 2)
                                  .Add("RotRegistration errror Access is denied.", 0)
                                  .Add("Deamon Thread started", 2)
                                  .Build();
    EXPECT_EQ(timeline.runs.size(), 1U);
}

TEST(Timeline, begins_a_run_where_supervision_goes_on_behind_an_end)
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
        const Timeline timeline = Log()
                                      .Add("Deamon Thread started", 2)
                                      .Add("Deamon Thread is exiting...", 2)
                                      .Add(line)
                                      .Build();
        ASSERT_EQ(timeline.runs.size(), 2U) << line;
        EXPECT_TRUE(timeline.runs[0].endSeen) << line;
        EXPECT_FALSE(timeline.runs[1].endSeen) << line;
    }
}

TEST(Timeline, keeps_a_stop_in_its_run_that_was_under_way_when_it_ended)
{
    Log log;
    log.StartUp()
        .Add("Start DaemonId(0) PId(10) : a.exe ", 2)
        .Add("Deamon Thread is exiting...", 2)
        .Add("Stop (2) DaemonId(0) PId(10) : a.exe ");
    ASSERT_EQ(log.Build().runs.size(), 1U);
    EXPECT_EQ(log.Build().runs[0].Find(0)->state, DaemonState::kStopped);
    log.Add("Stop (2) DaemonId(0) PId(10) : a.exe "); // ended already: not this run's
    EXPECT_EQ(log.Build().runs.size(), 2U);
}

TEST(Timeline, tells_an_orderly_end_and_how_many_were_left)
{
    const Timeline timeline = Log()
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
    EXPECT_EQ(run.Find(0)->lives[0].end, LifeEnd::kSupervisorGone);
}

TEST(Timeline, tells_which_beginnings_are_no_longer_in_the_log)
{
    const Timeline timeline = Log()
                                  .Add("Exception caught in : Unknown (0x1)", 0)
                                  .Add("Start DaemonId(4) PId(41) : a.exe ")
                                  .Add("Start DaemonId(5) PId(51) : b.exe ")
                                  .Build();
    EXPECT_FALSE(timeline.runs[0].beginningSeen);
    const DaemonHistory* const daemon = timeline.runs[0].Find(4);
    ASSERT_EQ(daemon->lives.size(), 2U);
    EXPECT_FALSE(daemon->lives[0].startSeen);
    EXPECT_EQ(daemon->lives[0].endMs, 1000);
    EXPECT_FALSE(daemon->beginningSeen);
    EXPECT_FALSE(timeline.runs[0].Find(5)->beginningSeen);
}

TEST(Timeline, leaves_an_attach_that_was_under_way_at_a_runs_end_in_that_run)
{
    const Timeline timeline = Log()
                                  .StartUp()
                                  .Add("Start DaemonId(0) PId(10) : a.exe ", 2)
                                  .Add("Deamon Thread is exiting...", 2)
                                  .Add("Attach DaemonId(1) PId(11) : b.exe ", 2)
                                  .Build();
    ASSERT_EQ(timeline.runs.size(), 1U);
    EXPECT_TRUE(timeline.runs[0].endSeen);
    EXPECT_NE(timeline.runs[0].Find(1), nullptr);
}

TEST(Timeline, keeps_ends_whose_daemon_is_unknown)
{
    const Timeline timeline = Log()
                                  .StartUp()
                                  .Add("Exception caught in : Unknown (0x1)", 0)
                                  .Add("Exception caught in : Unknown (0x2)", 0)
                                  .Add("Start DaemonId(4) PId(41) : a.exe ")
                                  .Build();
    ASSERT_EQ(timeline.runs[0].unknownEnds.size(), 1U);
    EXPECT_EQ(timeline.runs[0].unknownEnds[0].reason, "Unknown (0x1)");
}

TEST(Timeline, closes_a_life_whose_end_is_missing_when_the_next_begins)
{
    const Timeline timeline = Log()
                                  .StartUp()
                                  .Add("Start DaemonId(0) PId(10) : a.exe ", 2)
                                  .Add("Start DaemonId(0) PId(11) : a.exe ")
                                  .Build();
    EXPECT_EQ(timeline.runs[0].Find(0)->lives[0].end, LifeEnd::kLost);
    EXPECT_EQ(timeline.runs[0].Find(0)->lives[0].endMs, 6000);
}

TEST(Timeline, tells_gaps_but_takes_a_new_count_after_a_start_for_none)
{
    Log log;
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

TEST(Timeline, tells_processes_that_could_not_be_attached)
{
    const Timeline timeline =
        Log().StartUp().Add("Unable to attach DaemonId(2) PId(77) :  ").Build();
    ASSERT_EQ(timeline.runs[0].failedAttaches.size(), 1U);
    EXPECT_EQ(timeline.runs[0].failedAttaches[0].processId, 77U);
    EXPECT_EQ(timeline.runs[0].Find(2), nullptr);
}

TEST(Timeline, knows_a_service_by_its_description)
{
    const Timeline timeline = Log()
                                  .StartUp()
                                  .Add("Attach DaemonId(0) PId(10) : Spooler", 2)
                                  .Add("Attach DaemonId(1) PId(11) : b.exe ", 2)
                                  .Build();
    EXPECT_TRUE(timeline.runs[0].Find(0)->IsService());
    EXPECT_FALSE(timeline.runs[0].Find(1)->IsService());
}

} // namespace
} // namespace vqrx::test
