// The model of a report that was told what `ps` shows.
#include "ReportModel.h"

#include "ReportJson.h"
#include "TimelineBuilder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace vqrx::test {
namespace {

using namespace client::v0;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Pair;

// The supervisor runs at 160 s. Its log shows that process 10 of daemon 0 was started at 100 s.
ReportModel ModelWith(const std::vector<DaemonStatus>& daemons)
{
    const Timeline timeline =
        BuildTimeline({Record{0, 90000, 2, "", "Connecting to WMI resource ..."},
                       Record{1, 100000, 2, "", "Start DaemonId(0) PId(10) : a.exe "}});
    return MakeReportModel(timeline, {SupervisorState::kRunning, 160000, "", daemons});
}

DaemonStatus DaemonIn(RunState state)
{
    DaemonStatus daemon;
    daemon.id = 0;
    daemon.state = state;
    daemon.command = "a.exe ";
    return daemon;
}

TEST(ReportModelNow, process_that_is_gone_has_ended_although_the_log_does_not_show_it)
{
    DaemonStatus daemon = DaemonIn(RunState::kEnded);
    daemon.endedMs = 130000;
    const ReportModel model = ModelWith({daemon});
    const ReportLane& lane = model.lanes.at(0);
    EXPECT_EQ(lane.state, "ended");
    EXPECT_TRUE(lane.isRegistered);
    EXPECT_EQ(lane.intervals.at(0).endMs, 130000);
    EXPECT_EQ(lane.availability, 0.5);
    EXPECT_THAT(lane.ends, ElementsAre(Pair("not in the log", 1U)));
    EXPECT_THAT(ReportJson(model, "", ""), HasSubstr("\"up_since_ms\": null"));
}

TEST(ReportModelNow, process_that_ended_at_an_unknown_time_ended_just_now)
{
    const ReportModel model = ModelWith({DaemonIn(RunState::kEnded)});
    EXPECT_EQ(model.lanes.at(0).state, "ended");
    EXPECT_EQ(model.lanes.at(0).intervals.at(0).endMs, 160000);
    EXPECT_THAT(ReportJson(model, "", ""), HasSubstr("\"up_since_ms\": null"));
}

TEST(ReportModelNow, process_that_runs_or_may_not_be_examined_reaches_to_now)
{
    for (const RunState state : {RunState::kRunning, RunState::kUnknown}) {
        DaemonStatus daemon = DaemonIn(state);
        daemon.processId = 10;
        const ReportModel model = ModelWith({daemon});
        EXPECT_EQ(model.lanes.at(0).state, NameOf(state));
        EXPECT_EQ(model.lanes.at(0).intervals.at(0).endMs, 160000);
        EXPECT_EQ(model.lanes.at(0).availability, 1.0);
    }
}

TEST(ReportModelNow, process_without_a_record_has_a_lane)
{
    DaemonStatus child;
    child.state = RunState::kRunning;
    child.processId = 7;
    child.process.createdMs = 50000;
    child.inLog = false;
    child.command = "b.exe ";
    const ReportModel model = ModelWith({child});
    ASSERT_EQ(model.lanes.size(), 2U);
    const ReportLane& lane = model.lanes[1];
    EXPECT_EQ(lane.command, "b.exe");
    EXPECT_EQ(lane.state, "running");
    EXPECT_TRUE(lane.isRegistered);
    EXPECT_EQ(lane.intervals.at(0).beginMs, 50000);
    EXPECT_EQ(lane.longestMs, 110000);
    EXPECT_EQ(lane.availability, 1.0);
    EXPECT_EQ(lane.restarts, 0U);
}

} // namespace
} // namespace vqrx::test
