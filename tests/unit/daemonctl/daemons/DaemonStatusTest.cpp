#include "DaemonStatus.h"

#include "FakeLog.h"
#include "FakeMachine.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace vqrx::test {
namespace {

using namespace client::v0;

constexpr const char* kImage = R"(C:\FW\App\a.exe)";

std::vector<DaemonStatus> StatusOf(const FakeLog& log, const FakeMachine& machine,
                                   const std::vector<ProcessFacts>& children = {})
{
    const Timeline timeline = log.Timeline();
    EXPECT_NE(RunThatGoesOn(timeline), nullptr);
    return StatusOfDaemons(*RunThatGoesOn(timeline), machine.Source(), log.NowMs(), children);
}

TEST(DaemonStatus, Daemon_is_running_while_its_logged_process_runs)
{
    FakeLog log;
    FakeMachine machine;
    log.Begin();
    machine.Run(12, kImage, log.NowMs());
    log.Add(2, R"(Start DaemonId(0) PId(12) : C:\FW\App\a.exe -x )");
    const auto daemons = StatusOf(log, machine);
    ASSERT_EQ(daemons.size(), 1U);
    EXPECT_EQ(daemons[0].id, 0U);
    EXPECT_EQ(daemons[0].state, RunState::kRunning);
    EXPECT_EQ(daemons[0].processId, 12U);
    EXPECT_EQ(daemons[0].process.image, kImage);
    EXPECT_EQ(daemons[0].restarts, 0U);
    EXPECT_TRUE(daemons[0].restartsComplete);
    EXPECT_FALSE(daemons[0].lastExit.has_value());
    EXPECT_EQ(daemons[0].command, R"(C:\FW\App\a.exe -x )");
    EXPECT_FALSE(daemons[0].attached);
    EXPECT_FALSE(daemons[0].service);
    EXPECT_TRUE(daemons[0].inLog);
}

TEST(DaemonStatus, Daemon_is_ended_if_its_process_is_gone_or_another_process_has_its_id)
{
    FakeLog log;
    FakeMachine machine;
    log.Begin().Add(2, R"(Start DaemonId(0) PId(12) : C:\FW\App\a.exe )");
    EXPECT_EQ(StatusOf(log, machine)[0].state, RunState::kEnded);
    EXPECT_EQ(StatusOf(log, machine)[0].processId, std::nullopt);
    machine.Run(12, kImage, log.NowMs() + 5000);
    EXPECT_EQ(StatusOf(log, machine)[0].state, RunState::kEnded);
    machine.Run(12, R"(C:\other.exe)", log.NowMs() - 1000);
    EXPECT_EQ(StatusOf(log, machine)[0].state, RunState::kEnded);
}

TEST(DaemonStatus, State_is_unknown_if_the_process_may_not_be_examined)
{
    FakeLog log;
    FakeMachine machine;
    log.Begin().Add(2, R"(Start DaemonId(0) PId(12) : C:\FW\App\a.exe )");
    machine.processes[12].state = ProcessFacts::State::kHidden;
    EXPECT_EQ(StatusOf(log, machine)[0].state, RunState::kUnknown);
    EXPECT_EQ(StatusOf(log, machine)[0].processId, 12U);
}

TEST(DaemonStatus, Restarts_are_counted_and_the_last_exit_is_kept)
{
    FakeLog log;
    FakeMachine machine;
    log.Begin()
        .Add(2, R"(Start DaemonId(3) PId(12) : C:\FW\App\a.exe )")
        .Add(0, "Exception caught in : Access violation")
        .Add(1, R"(Start DaemonId(3) PId(13) : C:\FW\App\a.exe )");
    const std::int64_t endMs = log.NowMs();
    log.Add(0, "Exception caught in : Unknown (0x3)")
        .Add(1, R"(Start DaemonId(3) PId(14) : C:\FW\App\a.exe )");
    machine.Run(14, kImage, log.NowMs() - 1000);
    const auto daemons = StatusOf(log, machine);
    ASSERT_EQ(daemons.size(), 1U);
    EXPECT_EQ(daemons[0].restarts, 2U);
    EXPECT_TRUE(daemons[0].restartsComplete);
    ASSERT_TRUE(daemons[0].lastExit.has_value());
    EXPECT_EQ(daemons[0].lastExit->reason, "Unknown (0x3)");
    EXPECT_EQ(daemons[0].lastExit->timeMs, endMs);
    EXPECT_TRUE(daemons[0].lastExit->sure);
}

TEST(DaemonStatus, Restarts_are_incomplete_if_the_log_no_longer_shows_the_first_start)
{
    FakeLog log;
    FakeMachine machine;
    log.Add(1, R"(Start DaemonId(3) PId(13) : C:\FW\App\a.exe )")
        .Add(0, "Exception caught in : Unknown (0x3)")
        .Add(1, R"(Start DaemonId(3) PId(14) : C:\FW\App\a.exe )");
    const auto daemons = StatusOf(log, machine);
    ASSERT_EQ(daemons.size(), 1U);
    EXPECT_EQ(daemons[0].restarts, 2U);
    EXPECT_FALSE(daemons[0].restartsComplete);
}

TEST(DaemonStatus, Stopped_and_detached_daemons_are_left_out)
{
    FakeLog log;
    FakeMachine machine;
    log.Begin()
        .Add(2, R"(Start DaemonId(0) PId(12) : C:\FW\App\a.exe )")
        .Add(2, R"(Attach DaemonId(1) PId(13) : C:\FW\App\b.exe )")
        .Add(1, R"(Stop (1) DaemonId(0) PId(12) : C:\FW\App\a.exe )")
        .Add(1, R"(Detached DaemonId(1) PId(13) : C:\FW\App\b.exe )");
    EXPECT_TRUE(StatusOf(log, machine).empty());
}

TEST(DaemonStatus, Daemon_cannot_start_until_the_supervisor_no_longer_tries)
{
    FakeLog log;
    FakeMachine machine;
    log.Begin()
        .Add(2, R"(Start DaemonId(0) PId(12) : C:\FW\App\a.exe )")
        .Add(0, "Exception caught in : Unknown (0x3)")
        .Add(1, R"(Unable to start DaemonId(0) PId(12) : C:\FW\App\a.exe )")
        .Add(1, R"(Unable to start C:\no.exe )")
        .Add(1, R"(Unable to start C:\no.exe )");
    auto daemons = StatusOf(log, machine);
    ASSERT_EQ(daemons.size(), 2U);
    EXPECT_EQ(daemons[0].id, 0U);
    EXPECT_EQ(daemons[0].state, RunState::kCannotStart);
    EXPECT_EQ(daemons[0].lastExit->reason, "Unknown (0x3)");
    EXPECT_EQ(daemons[1].id, std::nullopt);
    EXPECT_EQ(daemons[1].state, RunState::kCannotStart);
    EXPECT_EQ(daemons[1].command, R"(C:\no.exe )");
    EXPECT_EQ(daemons[0].failedStarts, 1U);
    EXPECT_EQ(daemons[1].restarts, 0U); // it never ran
    EXPECT_TRUE(daemons[1].restartsComplete);
    EXPECT_EQ(daemons[1].failedStarts, 2U);
    for (int second = 0; second < 16; ++second) { // a client stopped both, which leaves no record
        log.Add(2, "something else");
    }
    EXPECT_TRUE(StatusOf(log, machine).empty());
}

TEST(DaemonStatus, Service_is_running_if_its_configured_program_runs)
{
    FakeLog log;
    FakeMachine machine;
    machine.services["SnmpSvc"] = R"("C:\Program Files\s.exe" -k net)";
    machine.Run(12, R"(C:\Program Files\s.exe)", log.NowMs() - 86400000);
    log.Begin().Add(2, "Attach DaemonId(0) PId(12) : SnmpSvc");
    const auto daemons = StatusOf(log, machine);
    ASSERT_EQ(daemons.size(), 1U);
    EXPECT_EQ(daemons[0].state, RunState::kRunning);
    EXPECT_TRUE(daemons[0].service);
    EXPECT_TRUE(daemons[0].attached);
}

TEST(DaemonStatus, Child_of_the_supervisor_without_a_record_is_shown_without_an_id)
{
    FakeLog log;
    FakeMachine machine;
    log.Begin();
    machine.Run(12, kImage, log.NowMs());
    machine.Run(13, R"(C:\b.exe)", log.NowMs());
    log.Add(2, R"(Start DaemonId(0) PId(12) : C:\FW\App\a.exe )");
    const auto daemons = StatusOf(log, machine, {machine.processes[12], machine.processes[13]});
    ASSERT_EQ(daemons.size(), 2U);
    EXPECT_EQ(daemons[1].id, std::nullopt);
    EXPECT_EQ(daemons[1].processId, 13U);
    EXPECT_EQ(daemons[1].state, RunState::kRunning);
    EXPECT_FALSE(daemons[1].inLog);
    EXPECT_EQ(daemons[1].command, R"(C:\b.exe -x y z )");
}

TEST(DaemonStatus, Child_that_has_ended_meanwhile_is_no_daemon_of_its_own)
{
    FakeLog log;
    FakeMachine machine;
    log.Begin().Add(2, R"(Start DaemonId(0) PId(12) : C:\FW\App\a.exe -q )");
    machine.Run(13, kImage, log.NowMs()); // its arguments can no longer be read
    machine.Run(14, "", log.NowMs());     // it ends, or has just been made
    const auto children = std::vector{machine.processes[13], machine.processes[14]};
    machine.processes.erase(13);
    EXPECT_EQ(StatusOf(log, machine, children).size(), 1U);
    machine.Run(13, R"(C:\b.exe)", log.NowMs() + 60000); // another process has got the id
    EXPECT_EQ(StatusOf(log, machine, children).size(), 1U);
}

TEST(DaemonStatus, Child_whose_start_is_not_in_the_log_yet_belongs_to_the_daemon_that_has_ended)
{
    FakeLog log;
    FakeMachine machine;
    log.Begin()
        .Add(2, R"(Start DaemonId(0) PId(11) : C:\FW\App\a.exe -q )")
        .Add(2, R"(Start DaemonId(1) PId(12) : C:\FW\App\a.exe -x y z )")
        .Add(0, "Exception caught in : Unknown (0x3)");
    machine.Run(13, kImage, log.NowMs());
    const auto daemons = StatusOf(log, machine, {machine.processes[13]});
    ASSERT_EQ(daemons.size(), 2U);
    EXPECT_EQ(daemons[0].state, RunState::kEnded); // it has other arguments
    EXPECT_EQ(daemons[1].state, RunState::kRunning);
    EXPECT_EQ(daemons[1].processId, 13U);
}

TEST(DaemonStatus, Daemon_in_a_crash_loop_is_restarting_with_and_without_a_process)
{
    FakeLog log;
    FakeMachine machine;
    log.Begin().Add(2, R"(Start DaemonId(0) PId(12) : C:\FW\App\a.exe )");
    for (int restart = 1; restart <= 5; ++restart) {
        EXPECT_EQ(StatusOf(log, machine)[0].state, RunState::kEnded);
        log.Add(0, "Exception caught in : Access violation")
            .Add(1, R"(Start DaemonId(0) PId(12) : C:\FW\App\a.exe )");
    }
    DaemonStatus daemon = StatusOf(log, machine)[0];
    EXPECT_EQ(daemon.state, RunState::kRestarting);
    EXPECT_EQ(daemon.recent.lastHour, 5U);
    EXPECT_FALSE(daemon.Runs());
    machine.Run(12, kImage, log.NowMs() - 1000);
    daemon = StatusOf(log, machine)[0];
    EXPECT_EQ(daemon.state, RunState::kRestarting);
    EXPECT_EQ(daemon.processId, 12U);
    EXPECT_TRUE(daemon.Runs());
}

TEST(DaemonStatus, Refused_second_supervisor_does_not_hide_the_daemons_of_the_first)
{
    FakeLog log;
    FakeMachine machine;
    log.Begin();
    machine.Run(12, kImage, log.NowMs());
    log.Add(2, R"(Start DaemonId(0) PId(12) : C:\FW\App\a.exe )")
        .Begin()
        .Add(2, "Deamon Thread is exiting...");
    const auto daemons = StatusOf(log, machine);
    ASSERT_EQ(daemons.size(), 1U);
    EXPECT_EQ(daemons[0].state, RunState::kRunning);
}

TEST(DaemonStatus, Rest_of_a_refused_run_at_the_beginning_of_the_log_does_not_hide_the_daemons)
{
    FakeLog log;
    FakeMachine machine;
    log.Add(2, "Deamon Thread started").Add(2, "Deamon Thread is exiting...");
    machine.Run(12, kImage, log.NowMs());
    log.Add(1, R"(Start DaemonId(0) PId(12) : C:\FW\App\a.exe )");
    const auto daemons = StatusOf(log, machine);
    ASSERT_EQ(daemons.size(), 1U);
    EXPECT_EQ(daemons[0].state, RunState::kRunning);
    EXPECT_FALSE(daemons[0].restartsComplete);
}

TEST(RunThatGoesOn, None_if_every_run_has_ended)
{
    const Timeline ended = FakeLog().Begin().End().Timeline();
    EXPECT_EQ(RunThatGoesOn(ended), nullptr);
    EXPECT_EQ(RunThatGoesOn(Timeline()), nullptr);
}

TEST(RunThatGoesOn, Killed_run_before_the_last_one_is_not_it)
{
    FakeLog log;
    log.Begin().Add(
        1, R"(Start DaemonId(0) PId(12) : C:\FW\App\a.exe )"); // and the supervisor is killed
    log.Begin().Add(1, R"(Start DaemonId(0) PId(13) : C:\FW\App\b.exe )");
    Timeline timeline = log.Timeline();
    EXPECT_EQ(RunThatGoesOn(timeline), &timeline.runs[1]);
    log.End();
    timeline = log.Timeline();
    EXPECT_EQ(RunThatGoesOn(timeline), nullptr);
}

TEST(RunThatGoesOn, None_after_a_run_with_any_activity_was_closed)
{
    for (const char* line :
         {R"(Attach DaemonId(0) PId(12) : C:\FW\App\a.exe )", "Exit",
          "1 Processes still registered", R"(Unable to start C:\no.exe )",
          "Unable to attach DaemonId(0) PId(7) : ", "Exception caught in : Unknown (0x3)"}) {
        FakeLog log;
        log.Begin().Begin().Add(1, line).Add(2, "Deamon Thread is exiting...");
        const Timeline timeline = log.Timeline();
        EXPECT_EQ(RunThatGoesOn(timeline), nullptr) << line;
    }
}

TEST(RunThatGoesOn, Several_refused_supervisors_do_not_hide_the_first)
{
    FakeLog log;
    log.Begin();
    for (int refused = 0; refused < 3; ++refused) {
        log.Begin().Add(2, "Deamon Thread is exiting...");
    }
    const Timeline timeline = log.Timeline();
    EXPECT_EQ(RunThatGoesOn(timeline), &timeline.runs[0]);
}

} // namespace
} // namespace vqrx::test
