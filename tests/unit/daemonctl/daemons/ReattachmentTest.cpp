#include "Reattachment.h"

#include "ReattachmentFixture.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace vqrx::test {
namespace {

using namespace client::v0;

TEST_F(Reattachment, Processes_that_ran_when_the_former_supervisor_ended_are_attached)
{
    log_.Begin();
    Start(0, 12, "x");
    Start(1, 11, "y");
    log_.End().Begin();
    EXPECT_EQ(PlanNow(), (Lines{"0/12 attach", "1/11 attach"}));
}

TEST_F(Reattachment, Process_of_a_killed_supervisor_is_attached)
{
    log_.Begin();
    Start(0, 12, "x");
    log_.Begin();
    EXPECT_EQ(PlanNow(), Lines{"0/12 attach"});
}

TEST_F(Reattachment, Process_that_is_attached_already_is_not_attached_again)
{
    log_.Begin();
    Start(0, 12, "x");
    log_.End().Begin();
    Attach(4, 12, "x");
    EXPECT_EQ(PlanNow(), Lines{"0/12 already 4"});
}

// The process was created at a later time of the clock than the record of its attach has.
TEST_F(Reattachment, Process_that_was_attached_after_the_clock_was_set_back_is_not_attached_again)
{
    log_.Begin();
    Start(0, 12, "x");
    log_.SetClockBack(3600000).Begin();
    Attach(4, 12, "x");
    EXPECT_EQ(PlanNow(), Lines{"0/12 already 4"});
    log_.Begin(); // the next supervisor takes it over, too
    EXPECT_EQ(PlanNow(), Lines{"4/12 attach"});
}

// No record is as late as the process, but the running supervisor holds it.
TEST_F(Reattachment,
       Process_that_the_running_supervisor_holds_is_its_daemons_whatever_the_clock_says)
{
    log_.Begin();
    Start(0, 12, "x");
    log_.Begin();
    Attach(4, 12, "x");
    machine_.Run(12, R"(C:\FW\App\a.exe)", log_.NowMs() + 3600000);
    const ListedProcess listed{.id = 0,
                               .processId = 12,
                               .createdMs = log_.NowMs() + 3600000,
                               .image = R"(C:\FW\App\a.exe)",
                               .command = R"(C:\FW\App\a.exe x)"};
    EXPECT_EQ(PlanNow({listed}), Lines{"0/12 already 4"});
}

TEST_F(Reattachment, Stopped_and_detached_daemons_are_left_out)
{
    log_.Begin();
    Start(0, 12, "x");
    Start(1, 13, "y");
    Start(2, 14, "z");
    log_.Add(1, Line("Stop (2)", 0, 12, "x")).Add(1, Line("Detached", 1, 13, "y")).End().Begin();
    Attach(0, 14, "z");
    log_.Add(1, Line("Detached", 0, 14, "z"));
    EXPECT_EQ(PlanNow(), Lines{});
}

TEST_F(Reattachment, Another_process_with_the_id_is_never_attached)
{
    log_.Begin();
    Start(0, 12, "x");
    Start(1, 13, "y");
    Start(2, 14, "z");
    log_.End().Begin();
    machine_.Run(12, R"(C:\FW\App\a.exe)", log_.NowMs());
    machine_.Run(13, R"(C:\b.exe)", machine_.processes[13].createdMs);
    machine_.processes.erase(14);
    EXPECT_EQ(
        PlanNow(),
        (Lines{
            R"(0/12 lost: process 12 has ended; the id belongs to another process now, C:\FW\App\a.exe)",
            R"(1/13 lost: process 13 runs another program, C:\b.exe)",
            "2/14 lost: process 14 has ended"}));
}

TEST_F(Reattachment, Daemon_without_a_process_at_the_end_is_lost)
{
    log_.Begin();
    Start(0, 12, "x");
    log_.Add(0, "Exception caught in : Unknown (0x1)")
        .Add(1, Line("Unable to start", 0, 12, "x"))
        .End()
        .Begin();
    machine_.processes.clear();
    EXPECT_EQ(PlanNow(), Lines{"0/- lost: it had no process when its supervisor ended"});
}

TEST_F(Reattachment, Daemon_that_was_launched_again_is_not_lost)
{
    log_.Begin();
    Start(0, 12, "x");
    log_.End().Begin();
    machine_.processes.clear();
    Start(3, 15, "x");
    EXPECT_EQ(PlanNow(), Lines{"0/12 already 3"});
}

TEST_F(Reattachment, New_daemon_counts_for_one_former_daemon_only)
{
    log_.Begin();
    Attach(0, 12, "x");
    Attach(1, 13, "x");
    log_.End().Begin();
    machine_.Run(13, R"(C:\FW\App\a.exe)", 0);
    Attach(0, 13, "x");
    EXPECT_EQ(PlanNow(), (Lines{"0/12 lost: process 12 has ended", "1/13 already 0"}));
}

TEST_F(Reattachment, Daemons_of_earlier_supervisors_are_attached_if_they_still_run)
{
    log_.Begin();
    Start(0, 12, "x");
    Start(1, 13, "y");
    Start(2, 14, "z");
    machine_.processes.erase(14); // a process of an earlier supervisor, long gone: not in the plan
    log_.End().Begin().End().Begin();
    Attach(0, 12, "x");
    log_.End().Begin();
    EXPECT_EQ(PlanNow(), (Lines{"0/12 attach", "1/13 attach"}));
}

TEST_F(Reattachment, Listed_processes_are_planned_without_a_record_in_the_log)
{
    log_.Begin();
    Start(1, 13, "y");
    log_.End().Begin();
    machine_.Run(12, R"(C:\FW\App\a.exe)", 5000);
    machine_.Run(14, R"(C:\FW\App\a.exe)", 6000);
    machine_.Run(15, R"(C:\FW\App\c.exe)", 7000);
    const std::string image = R"(C:\FW\App\a.exe)";
    EXPECT_EQ(
        PlanNow({{0, 12, 5000, image, "x", false},
                 {std::nullopt, 14, 5999, image, "x", false},
                 {2, 15, 7000, image, "x", false},
                 {3, 16, 7000, image, "x", false}}),
        (Lines{
            "0/12 attach", "1/13 attach",
            R"(2/15 lost: process 15 runs another program, C:\FW\App\c.exe)",
            "3/16 lost: process 16 has ended",
            R"(-/14 lost: process 14 has ended; the id belongs to another process now, C:\FW\App\a.exe)"}));
}

TEST_F(Reattachment, Process_in_both_log_and_listing_is_planned_once)
{
    log_.Begin();
    Start(0, 12, "x");
    log_.End().Begin();
    EXPECT_EQ(PlanNow({{0, 12, machine_.processes[12].createdMs, R"(C:\FW\App\a.exe)",
                        R"(C:\FW\App\a.exe x)", false}}),
              Lines{"0/12 attach"});
}

TEST_F(Reattachment, Process_that_is_listed_twice_is_planned_once)
{
    log_.Begin().End().Begin();
    machine_.Run(12, R"(C:\FW\App\a.exe)", 5000);
    const ListedProcess first{0, 12, 5000, R"(C:\FW\App\a.exe)", "x", false};
    ListedProcess second = first;
    second.id = 1;
    EXPECT_EQ(PlanNow({first, second}), Lines{"0/12 attach"});
    Attach(4, 12, "x");
    EXPECT_EQ(PlanNow({first, second}), Lines{"0/12 already 4"});
}

TEST_F(Reattachment, Process_that_replaced_the_listed_one_is_attached_and_none_is_lost)
{
    log_.Begin();
    Start(0, 12, "x");
    const std::string image = R"(C:\FW\App\a.exe)";
    const std::vector<ListedProcess> listed = {
        {0, 12, machine_.processes[12].createdMs, image, image + " x", false}};
    machine_.processes.erase(12);
    log_.Add(0, "Exception caught in : Unknown (0x1)");
    Start(0, 15, "x");
    log_.End().Begin();
    EXPECT_EQ(PlanNow(listed), Lines{"0/15 attach"});
    Attach(0, 15, "x");
    EXPECT_EQ(PlanNow(listed), Lines{"0/15 already 0"});
}

TEST_F(Reattachment, Listed_process_that_ended_before_its_supervisor_is_lost_once)
{
    log_.Begin();
    Start(0, 12, "x");
    Start(1, 13, "y");
    const std::string image = R"(C:\FW\App\a.exe)";
    const std::vector<ListedProcess> listed = {
        {0, 12, machine_.processes[12].createdMs, image, image + " x", false},
        {1, 13, machine_.processes[13].createdMs, image, image + " y", false}};
    machine_.processes.clear();
    log_.Add(0, "Exception caught in : Unknown (0x1)")
        .Add(1, Line("Unable to start", 0, 12, "x"))
        .Add(1, Line("Stop (2)", 1, 13, "y")) // a client stopped daemon 1
        .End()
        .Begin();
    EXPECT_EQ(PlanNow(listed), Lines{"0/- lost: it had no process when its supervisor ended"});
}

TEST_F(Reattachment, Listed_process_of_another_command_is_lost)
{
    log_.Begin();
    Start(0, 12, "x");
    machine_.processes.erase(12);
    log_.Add(0, "Exception caught in : Unknown (0x1)");
    Start(0, 15, "x");
    log_.End().Begin();
    EXPECT_EQ(PlanNow({{0, 12, 5000, R"(C:\other.exe)", R"(C:\other.exe x)", false}}),
              (Lines{"0/12 lost: process 12 has ended", "0/15 attach"}));
}

TEST_F(Reattachment, Plan_fits_only_the_process_that_it_was_made_for)
{
    log_.Begin();
    Start(0, 12, "x");
    log_.End().Begin();
    const Timeline timeline = log_.Timeline();
    const auto plan = PlanReattachment(timeline, timeline.runs[1], {}, machine_.Source());
    ASSERT_EQ(plan.size(), 1U);
    ASSERT_EQ(plan[0].plan, FormerDaemon::Plan::kAttach);
    const ProcessFacts planned = machine_.processes[12];
    EXPECT_EQ(FitPlan(plan[0], planned), ProcessFit::kSame);
    ProcessFacts now = planned;
    now.createdMs += 1;
    EXPECT_EQ(FitPlan(plan[0], now), ProcessFit::kOtherTime);
    now = planned;
    now.image = R"(C:\other.exe)";
    EXPECT_EQ(FitPlan(plan[0], now), ProcessFit::kOtherProgram);
    now.state = ProcessFacts::State::kGone;
    EXPECT_EQ(FitPlan(plan[0], now), ProcessFit::kGone);
    now.state = ProcessFacts::State::kHidden;
    EXPECT_EQ(FitPlan(plan[0], now), ProcessFit::kHidden);
}

TEST_F(Reattachment, Plan_of_the_first_supervisor_is_empty)
{
    log_.Begin();
    Start(0, 12, "x");
    EXPECT_EQ(PlanNow(), Lines{});
}

} // namespace
} // namespace vqrx::test
