#include "Reattachment.h"
#include "MachineOfTests.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace vqrx::test {
namespace {

using namespace client::v0;
using Plan = FormerDaemon::Plan;

class Reattachment : public ::testing::Test {
protected:
    // A line of a start, and its process.
    void Start(std::uint32_t id, std::uint32_t process, const std::string& argument)
    {
        machine_.Run(process, R"(C:\FW\App\a.exe)", log_.NowMs());
        log_.Add(2, Line("Start", id, process, argument));
    }
    void Attach(std::uint32_t id, std::uint32_t process, const std::string& argument)
    {
        log_.Add(2, Line("Attach", id, process, argument));
    }
    static std::string Line(const std::string& what, std::uint32_t id, std::uint32_t process,
                            const std::string& argument)
    {
        return what + " DaemonId(" + std::to_string(id) + ") PId(" + std::to_string(process) +
               R"() : C:\FW\App\a.exe )" + argument + " ";
    }

    // "0/12 attach" or "0/12 already 3" or "0/12 lost: why", in order.
    std::vector<std::string> PlanNow(const std::vector<ListedProcess>& listed = {})
    {
        const Timeline timeline = log_.Timeline();
        const SupervisorRun* const current = RunThatGoesOn(timeline);
        std::vector<std::string> lines;
        for (const FormerDaemon& former :
             PlanReattachment(timeline, *current, listed, machine_.Source())) {
            std::string line = (former.id ? std::to_string(*former.id) : "-") + "/" +
                               (former.processId ? std::to_string(*former.processId) : "-");
            line += former.plan == Plan::attach    ? " attach"
                    : former.plan == Plan::already ? " already " + std::to_string(*former.newId)
                                                   : " lost: " + former.note;
            lines.push_back(line);
        }
        return lines;
    }

    using Lines = std::vector<std::string>;
    LogOfTests log_;
    MachineOfTests machine_;
};

TEST_F(Reattachment, takes_what_ran_when_the_former_supervisor_ended)
{
    log_.Begin();
    Start(0, 12, "x");
    Start(1, 11, "y");
    log_.End().Begin();
    EXPECT_EQ(PlanNow(), (Lines{"0/12 attach", "1/11 attach"}));
}

TEST_F(Reattachment, takes_it_from_a_supervisor_that_left_no_last_words)
{
    log_.Begin();
    Start(0, 12, "x");
    log_.Begin();
    EXPECT_EQ(PlanNow(), Lines{"0/12 attach"});
}

TEST_F(Reattachment, does_nothing_twice)
{
    log_.Begin();
    Start(0, 12, "x");
    log_.End().Begin();
    Attach(4, 12, "x");
    EXPECT_EQ(PlanNow(), Lines{"0/12 already 4"});
}

TEST_F(Reattachment, leaves_alone_what_was_stopped_or_let_go)
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

TEST_F(Reattachment, never_takes_another_process_of_the_same_id)
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

TEST_F(Reattachment, tells_what_did_not_run_at_the_end)
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

TEST_F(Reattachment, does_not_miss_what_was_launched_again)
{
    log_.Begin();
    Start(0, 12, "x");
    log_.End().Begin();
    machine_.processes.clear();
    Start(3, 15, "x");
    EXPECT_EQ(PlanNow(), Lines{"0/12 already 3"});
}

TEST_F(Reattachment, does_not_take_one_new_daemon_for_two_former_ones)
{
    log_.Begin();
    Attach(0, 12, "x");
    Attach(1, 13, "x");
    log_.End().Begin();
    machine_.Run(13, R"(C:\FW\App\a.exe)", 0);
    Attach(0, 13, "x");
    EXPECT_EQ(PlanNow(), (Lines{"0/12 lost: process 12 has ended", "1/13 already 0"}));
}

TEST_F(Reattachment, goes_back_behind_a_supervisor_that_took_nothing_or_only_some)
{
    log_.Begin();
    Start(0, 12, "x");
    Start(1, 13, "y");
    Start(2, 14, "z");
    machine_.processes.erase(14); // long gone: that is no news
    log_.End().Begin().End().Begin();
    Attach(0, 12, "x");
    log_.End().Begin();
    EXPECT_EQ(PlanNow(), (Lines{"0/12 attach", "1/13 attach"}));
}

TEST_F(Reattachment, knows_from_a_listing_what_the_log_does_not_tell)
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

TEST_F(Reattachment, of_what_log_and_listing_tell_alike_happens_once)
{
    log_.Begin();
    Start(0, 12, "x");
    log_.End().Begin();
    EXPECT_EQ(PlanNow({{0, 12, machine_.processes[12].createdMs, R"(C:\FW\App\a.exe)",
                        R"(C:\FW\App\a.exe x)", false}}),
              Lines{"0/12 attach"});
}

TEST_F(Reattachment, takes_the_process_that_followed_the_listed_one_and_misses_none)
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

TEST_F(Reattachment, misses_a_listed_process_once_that_ended_before_its_supervisor)
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
        .Add(1, Line("Stop (2)", 1, 13, "y")) // a client wanted that
        .End()
        .Begin();
    EXPECT_EQ(PlanNow(listed), Lines{"0/- lost: it had no process when its supervisor ended"});
}

TEST_F(Reattachment, misses_a_listed_process_of_another_supervisors_daemon)
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

TEST_F(Reattachment, attaches_only_the_process_that_the_plan_was_made_for)
{
    log_.Begin();
    Start(0, 12, "x");
    log_.End().Begin();
    const Timeline timeline = log_.Timeline();
    const auto plan = PlanReattachment(timeline, timeline.runs[1], {}, machine_.Source());
    ASSERT_EQ(plan.size(), 1U);
    ASSERT_EQ(plan[0].plan, Plan::attach);
    const ProcessFacts planned = machine_.processes[12];
    EXPECT_EQ(FitPlan(plan[0], planned), ProcessFit::same);
    ProcessFacts now = planned;
    now.createdMs += 1;
    EXPECT_EQ(FitPlan(plan[0], now), ProcessFit::otherTime);
    now = planned;
    now.image = R"(C:\other.exe)";
    EXPECT_EQ(FitPlan(plan[0], now), ProcessFit::otherProgram);
    now.state = ProcessFacts::State::gone;
    EXPECT_EQ(FitPlan(plan[0], now), ProcessFit::gone);
    now.state = ProcessFacts::State::hidden;
    EXPECT_EQ(FitPlan(plan[0], now), ProcessFit::hidden);
}

TEST_F(Reattachment, tells_what_could_never_be_started)
{
    log_.Begin();
    Start(0, 12, "x");
    log_.Add(1, R"(Unable to start C:\stopped.exe )"); // no line tells of the stop
    for (int second = 0; second < 16; ++second) {
        log_.Add(2, "something else");
    }
    log_.Add(1, R"(Unable to start C:\no.exe )").End().Begin();
    EXPECT_EQ(PlanNow(), (Lines{"0/12 attach", "-/- lost: its supervisor could never start it"}));
    Attach(0, 12, "x");
    log_.Add(1, R"(Unable to start C:\no.exe )"); // launched again: as it was
    EXPECT_EQ(PlanNow(), Lines{"0/12 already 0"});
}

TEST_F(Reattachment, does_not_miss_what_could_never_be_started_and_runs_now)
{
    log_.Begin().Add(1, R"(Unable to start C:\FW\App\a.exe x )").End().Begin();
    EXPECT_EQ(PlanNow(), Lines{"-/- lost: its supervisor could never start it"});
    Start(3, 15, "x");
    EXPECT_EQ(PlanNow(), Lines{"-/- already 3"});
}

TEST_F(Reattachment, of_a_first_supervisor_finds_nothing)
{
    log_.Begin();
    Start(0, 12, "x");
    EXPECT_EQ(PlanNow(), Lines{});
}

} // namespace
} // namespace vqrx::test
