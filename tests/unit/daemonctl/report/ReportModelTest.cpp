#include "ReportModel.h"

#include "TimelineBuilder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace vqrx::test {
namespace {

using client::v0::BuildTimeline;
using client::v0::MakeReportModel;
using client::v0::Record;
using client::v0::ReportLane;
using client::v0::ReportModel;
using client::v0::ReportMoment;
using client::v0::SupervisorState;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

/// Makes a log with records at given seconds.
class Log {
public:
    Log& At(std::int64_t seconds, const std::string& text, int level = 1)
    {
        records_.push_back(Record{number_++, seconds * 1000, level, "", text});
        return *this;
    }
    Log& StartUp(std::int64_t seconds)
    {
        return At(seconds, "Connecting to WMI resource ...", 2)
            .At(seconds, "Deamon Thread started", 2);
    }
    ReportModel Model(const ReportMoment& moment = {}) const
    {
        return MakeReportModel(BuildTimeline(records_), moment);
    }

private:
    std::vector<Record> records_;
    std::int64_t number_ = 0;
};

TEST(ReportModel, of_an_empty_log_is_empty)
{
    const ReportModel model = Log().Model();
    EXPECT_THAT(model.lanes, IsEmpty());
    EXPECT_EQ(model.records, 0U);
}

TEST(ReportModel, counts_restarts_ends_and_processes)
{
    const ReportModel model = Log()
                                  .StartUp(100)
                                  .At(100, "Start DaemonId(0) PId(10) : a.exe ", 2)
                                  .At(110, "Exception caught in : Access violation", 0)
                                  .At(111, "Start DaemonId(0) PId(11) : a.exe ")
                                  .At(131, "Exception caught in : Access violation", 0)
                                  .At(131, "Start DaemonId(0) PId(12) : a.exe ")
                                  .At(161, "Exception caught in : Unknown (0x1)", 0)
                                  .At(161, "Start DaemonId(0) PId(13) : a.exe ")
                                  .At(200, "Pin output buffer full : x")
                                  .Model();
    ASSERT_EQ(model.lanes.size(), 1U);
    const ReportLane& lane = model.lanes[0];
    EXPECT_EQ(lane.command, "a.exe");
    EXPECT_THAT(lane.ids, ElementsAre(0));
    EXPECT_EQ(lane.state, "running");
    EXPECT_EQ(lane.restarts, 3U);
    EXPECT_EQ(lane.longestMs, 39000); // process 13, which still runs
    EXPECT_EQ(lane.medianMs, 20000);  // of 10, 20 and 30 s
    ASSERT_TRUE(lane.availability);
    EXPECT_DOUBLE_EQ(*lane.availability, 0.99);
    EXPECT_THAT(lane.ends, ElementsAre(Pair("Access violation", 2U), Pair("exit code 1", 1U)));
    EXPECT_EQ(lane.intervals.size(), 4U);
    EXPECT_EQ(lane.intervals.back().endMs, 200000);
}

TEST(ReportModel, reaches_to_now_if_the_supervisor_runs)
{
    const Log log = Log().StartUp(100).At(100, "Start DaemonId(0) PId(10) : a.exe ", 2);
    const ReportModel copy = log.Model();
    EXPECT_EQ(copy.endMs, 100000);
    const ReportModel live = log.Model({SupervisorState::kRunning, 160000});
    EXPECT_EQ(live.endMs, 160000);
    EXPECT_EQ(live.lanes.at(0).longestMs, 60000);
    EXPECT_EQ(live.lanes.at(0).availability, 1.0);
    EXPECT_EQ(live.lanes.at(0).intervals.at(0).endMs, 160000);
    EXPECT_TRUE(live.lanes.at(0).isRegistered);
}

TEST(ReportModel, reaches_to_now_although_a_second_supervisor_was_refused)
{
    const ReportModel model = Log()
                                  .StartUp(100)
                                  .At(100, "Start DaemonId(0) PId(10) : a.exe ", 2)
                                  .StartUp(130)
                                  .At(131, "Deamon Thread is exiting...", 2)
                                  .Model({SupervisorState::kRunning, 160000});
    EXPECT_EQ(model.endMs, 160000);
    EXPECT_EQ(model.lanes.at(0).state, "running");
    EXPECT_TRUE(model.lanes.at(0).isRegistered);
    EXPECT_EQ(model.lanes.at(0).intervals.at(0).endMs, 160000);
    EXPECT_TRUE(model.gaps.empty()); // a supervisor ran all the time
}

// The supervisor logs nothing when a client stops a daemon whose starts fail.
TEST(ReportModel, forgets_a_daemon_that_nobody_tried_to_start_for_16_seconds)
{
    const Log log = Log()
                        .StartUp(100)
                        .At(100, "Start DaemonId(0) PId(10) : a.exe ", 2)
                        .At(110, "Exception caught in : Unknown (0x1)", 0)
                        .At(110, "Unable to start DaemonId(0) PId(10) : a.exe ")
                        .At(111, "Unable to start no.exe ")
                        .At(120, "Unable to start DaemonId(0) PId(10) : a.exe ")
                        .At(120, "Unable to start no.exe ");
    const ReportModel tried = log.Model({SupervisorState::kRunning, 135000});
    ASSERT_EQ(tried.lanes.size(), 2U);
    const ReportModel stopped = log.Model({SupervisorState::kRunning, 136000});
    ASSERT_EQ(stopped.lanes.size(), 2U);
    for (const std::size_t lane : {0, 1}) {
        SCOPED_TRACE(stopped.lanes[lane].command);
        EXPECT_EQ(tried.lanes[lane].state, "cannot start");
        EXPECT_TRUE(tried.lanes[lane].isRegistered);
        EXPECT_EQ(stopped.lanes[lane].state, "stopped");
        EXPECT_FALSE(stopped.lanes[lane].isRegistered);
    }
    EXPECT_EQ(tried.lanes[0].availability, 10.0 / 35); // of 100 to 135
    EXPECT_EQ(stopped.lanes[0].availability, 0.5);     // of 100 to 120
}

TEST(ReportModel, ends_at_the_last_record_if_the_supervisor_does_not_run)
{
    const ReportModel model = Log()
                                  .StartUp(100)
                                  .At(100, "Start DaemonId(0) PId(10) : a.exe ", 2)
                                  .Model({SupervisorState::kNotRunning, 160000});
    EXPECT_EQ(model.endMs, 100000);
    EXPECT_EQ(model.lanes.at(0).state, "left running");
    EXPECT_FALSE(model.lanes.at(0).isRegistered);
}

TEST(ReportModel, counts_a_process_that_ended_within_about_one_pass_as_down)
{
    Log log;
    log.StartUp(100).At(100, "Start DaemonId(0) PId(10) : a.exe ", 2);
    for (int second = 101; second <= 200; ++second) {
        log.At(second, "Exception caught in : Access violation", 0)
            .At(second, "Start DaemonId(0) PId(10) : a.exe ");
    }
    const ReportLane lane = log.Model({SupervisorState::kRunning, 200000}).lanes.at(0);
    EXPECT_EQ(lane.availability, 0.0);
    EXPECT_EQ(lane.state, "restarting");
    EXPECT_EQ(lane.recent.lastTenMinutes, 100U);
    EXPECT_EQ(lane.medianMs, 1000);
}

TEST(ReportModel, counts_a_process_that_a_client_stopped_at_once_as_up)
{
    const ReportModel model = Log()
                                  .StartUp(100)
                                  .At(100, "Start DaemonId(0) PId(10) : a.exe ", 2)
                                  .At(101, "Stop (1) DaemonId(0) PId(10) : a.exe ")
                                  .Model();
    EXPECT_EQ(model.lanes.at(0).availability, 1.0);
}

TEST(ReportModel, recognises_a_daemon_in_the_next_run_by_its_command)
{
    const ReportModel model = Log()
                                  .StartUp(100)
                                  .At(100, "Start DaemonId(0) PId(10) : a.exe ", 2)
                                  .At(100, "Start DaemonId(1) PId(11) : b.exe ", 2)
                                  .At(150, "Deamon Thread is exiting...", 2)
                                  .StartUp(200)
                                  .At(200, "Start DaemonId(0) PId(20) : b.exe ", 2)
                                  .At(220, "Stop (1) DaemonId(0) PId(20) : b.exe ")
                                  .Model();
    ASSERT_EQ(model.lanes.size(), 2U);
    EXPECT_EQ(model.lanes[0].command, "a.exe");
    EXPECT_EQ(model.lanes[0].state, "left running");
    EXPECT_EQ(model.lanes[1].command, "b.exe");
    EXPECT_THAT(model.lanes[1].ids, ElementsAre(0, 1));
    EXPECT_EQ(model.lanes[1].state, "stopped");
    EXPECT_EQ(model.lanes[1].intervals.size(), 2U);
    EXPECT_EQ(model.lanes[1].availability, 1.0);
    EXPECT_THAT(model.lanes[1].ends, ElementsAre(Pair("stopped on request", 1U)));
    ASSERT_EQ(model.gaps.size(), 1U);
    EXPECT_EQ(model.gaps[0].beginMs, 150000);
    EXPECT_EQ(model.gaps[0].endMs, 200000);
    EXPECT_EQ(model.gaps[0].text, "no supervisor ran");
}

TEST(ReportModel, explains_a_gap_that_an_outage_of_the_log_file_left)
{
    const ReportModel model =
        Log()
            .At(100, "Start DaemonId(0) PId(10) : a.exe ", 2)
            .At(160, "Log file a.log is written again. Messages missing in it: 7", 0)
            .Model();
    ASSERT_EQ(model.gaps.size(), 1U);
    EXPECT_EQ(model.gaps[0].beginMs, 100000);
    EXPECT_EQ(model.gaps[0].endMs, 160000);
    EXPECT_EQ(model.gaps[0].text, "7 records are missing: the log file could not be written");
}

TEST(ReportModel, gives_two_daemons_of_one_command_a_lane_each)
{
    const ReportModel model = Log()
                                  .StartUp(100)
                                  .At(100, "Attach DaemonId(0) PId(10) : a.exe ", 2)
                                  .At(101, "Attach DaemonId(1) PId(11) : a.exe ", 2)
                                  .Model();
    ASSERT_EQ(model.lanes.size(), 2U);
    EXPECT_THAT(model.lanes[0].ids, ElementsAre(0));
    EXPECT_THAT(model.lanes[1].ids, ElementsAre(1));
}

TEST(ReportModel, gives_a_daemon_that_never_started_a_lane)
{
    const ReportModel model = Log()
                                  .StartUp(100)
                                  .At(100, "Unable to start DaemonId(0) PId(10) : a.exe ")
                                  .At(101, "Unable to start DaemonId(0) PId(10) : a.exe ")
                                  .Model();
    ASSERT_EQ(model.lanes.size(), 1U);
    EXPECT_THAT(model.lanes[0].ids, IsEmpty());
    EXPECT_EQ(model.lanes[0].state, "cannot start");
    EXPECT_THAT(model.lanes[0].failedStarts, ElementsAre(100000, 101000));
    EXPECT_EQ(model.lanes[0].availability, 0.0);
}

TEST(ReportModel, counts_ends_of_unknown_daemons)
{
    const ReportModel model =
        Log().StartUp(100).At(100, "Exception caught in : Unknown (0x1)", 0).Model();
    EXPECT_EQ(model.unknownEnds, 1U);
    EXPECT_THAT(model.ends, ElementsAre(Pair("exit code 1", 1U)));
}

TEST(ReportModel, has_no_negative_interval_if_the_clock_was_set_back)
{
    const ReportModel model = Log()
                                  .StartUp(1000)
                                  .At(1000, "Start DaemonId(0) PId(10) : a.exe ", 2)
                                  .At(500, "Exception caught in : Unknown (0x1)", 0)
                                  .At(500, "Start DaemonId(0) PId(11) : a.exe ")
                                  .At(400, "Exit", 2)
                                  .Model();
    for (const auto& interval : model.lanes.at(0).intervals) {
        EXPECT_LE(interval.beginMs, interval.endMs);
    }
    EXPECT_LE(model.beginMs, model.endMs);
}

} // namespace
} // namespace vqrx::test
