#include "DaemonStatus.h"
#include "DaemonListing.h"
#include "Expectation.h"
#include "MachineOfTests.h"
#include "WaitCondition.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace vqrx::test {
namespace {

using namespace client::v0;

constexpr const char* kImage = R"(C:\FW\App\a.exe)";

std::vector<DaemonStatus> StatusOf(const LogOfTests& log, const MachineOfTests& machine,
                                   const std::vector<ProcessFacts>& children = {})
{
    const Timeline timeline = log.Timeline();
    const SupervisorRun* const run = RunThatGoesOn(timeline);
    EXPECT_NE(run, nullptr);
    return StatusOfDaemons(*run, machine.Source(), log.NowMs(), children);
}

TEST(DaemonStatus, is_running_while_the_logged_process_is_there)
{
    LogOfTests log;
    MachineOfTests machine;
    log.Begin();
    machine.Run(12, kImage, log.NowMs());
    log.Add(2, R"(Start DaemonId(0) PId(12) : C:\FW\App\a.exe -x )");
    const auto daemons = StatusOf(log, machine);
    ASSERT_EQ(daemons.size(), 1U);
    EXPECT_EQ(daemons[0].id, 0U);
    EXPECT_EQ(daemons[0].state, RunState::running);
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

TEST(DaemonStatus, is_ended_when_the_process_is_gone_or_its_id_is_anothers)
{
    LogOfTests log;
    MachineOfTests machine;
    log.Begin().Add(2, R"(Start DaemonId(0) PId(12) : C:\FW\App\a.exe )");
    EXPECT_EQ(StatusOf(log, machine)[0].state, RunState::ended);
    EXPECT_EQ(StatusOf(log, machine)[0].processId, std::nullopt);
    machine.Run(12, kImage, log.NowMs() + 5000);
    EXPECT_EQ(StatusOf(log, machine)[0].state, RunState::ended);
    machine.Run(12, R"(C:\other.exe)", log.NowMs() - 1000);
    EXPECT_EQ(StatusOf(log, machine)[0].state, RunState::ended);
}

TEST(DaemonStatus, is_unknown_for_a_process_that_may_not_be_asked)
{
    LogOfTests log;
    MachineOfTests machine;
    log.Begin().Add(2, R"(Start DaemonId(0) PId(12) : C:\FW\App\a.exe )");
    machine.processes[12].state = ProcessFacts::State::hidden;
    EXPECT_EQ(StatusOf(log, machine)[0].state, RunState::unknown);
    EXPECT_EQ(StatusOf(log, machine)[0].processId, 12U);
}

TEST(DaemonStatus, counts_restarts_and_keeps_the_last_exit)
{
    LogOfTests log;
    MachineOfTests machine;
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

TEST(DaemonStatus, says_when_the_log_no_longer_shows_the_first_start)
{
    LogOfTests log;
    MachineOfTests machine;
    log.Add(1, R"(Start DaemonId(3) PId(13) : C:\FW\App\a.exe )")
        .Add(0, "Exception caught in : Unknown (0x3)")
        .Add(1, R"(Start DaemonId(3) PId(14) : C:\FW\App\a.exe )");
    const auto daemons = StatusOf(log, machine);
    ASSERT_EQ(daemons.size(), 1U);
    EXPECT_EQ(daemons[0].restarts, 2U);
    EXPECT_FALSE(daemons[0].restartsComplete);
}

TEST(DaemonStatus, leaves_out_who_was_stopped_or_detached)
{
    LogOfTests log;
    MachineOfTests machine;
    log.Begin()
        .Add(2, R"(Start DaemonId(0) PId(12) : C:\FW\App\a.exe )")
        .Add(2, R"(Attach DaemonId(1) PId(13) : C:\FW\App\b.exe )")
        .Add(1, R"(Stop (1) DaemonId(0) PId(12) : C:\FW\App\a.exe )")
        .Add(1, R"(Detached DaemonId(1) PId(13) : C:\FW\App\b.exe )");
    EXPECT_TRUE(StatusOf(log, machine).empty());
}

TEST(DaemonStatus, cannot_start_as_long_as_it_is_tried)
{
    LogOfTests log;
    MachineOfTests machine;
    log.Begin()
        .Add(2, R"(Start DaemonId(0) PId(12) : C:\FW\App\a.exe )")
        .Add(0, "Exception caught in : Unknown (0x3)")
        .Add(1, R"(Unable to start DaemonId(0) PId(12) : C:\FW\App\a.exe )")
        .Add(1, R"(Unable to start C:\no.exe )");
    auto daemons = StatusOf(log, machine);
    ASSERT_EQ(daemons.size(), 2U);
    EXPECT_EQ(daemons[0].id, 0U);
    EXPECT_EQ(daemons[0].state, RunState::cannotStart);
    EXPECT_EQ(daemons[0].lastExit->reason, "Unknown (0x3)");
    EXPECT_EQ(daemons[1].id, std::nullopt);
    EXPECT_EQ(daemons[1].state, RunState::cannotStart);
    EXPECT_EQ(daemons[1].command, R"(C:\no.exe )");
    for (int second = 0; second < 16; ++second) { // stopped: that leaves no line
        log.Add(2, "something else");
    }
    EXPECT_TRUE(StatusOf(log, machine).empty());
}

TEST(DaemonStatus, of_a_service_is_found_by_its_configured_program)
{
    LogOfTests log;
    MachineOfTests machine;
    machine.services["SnmpSvc"] = R"("C:\Program Files\s.exe" -k net)";
    machine.Run(12, R"(C:\Program Files\s.exe)", log.NowMs() - 86400000);
    log.Begin().Add(2, "Attach DaemonId(0) PId(12) : SnmpSvc");
    const auto daemons = StatusOf(log, machine);
    ASSERT_EQ(daemons.size(), 1U);
    EXPECT_EQ(daemons[0].state, RunState::running);
    EXPECT_TRUE(daemons[0].service);
    EXPECT_TRUE(daemons[0].attached);
}

TEST(DaemonStatus, shows_children_of_which_the_log_does_not_tell)
{
    LogOfTests log;
    MachineOfTests machine;
    log.Begin();
    machine.Run(12, kImage, log.NowMs());
    machine.Run(13, R"(C:\b.exe)", log.NowMs());
    log.Add(2, R"(Start DaemonId(0) PId(12) : C:\FW\App\a.exe )");
    const auto daemons = StatusOf(log, machine, {machine.processes[12], machine.processes[13]});
    ASSERT_EQ(daemons.size(), 2U);
    EXPECT_EQ(daemons[1].id, std::nullopt);
    EXPECT_EQ(daemons[1].processId, 13U);
    EXPECT_EQ(daemons[1].state, RunState::running);
    EXPECT_FALSE(daemons[1].inLog);
    EXPECT_EQ(daemons[1].command, R"(C:\b.exe -x y z )");
}

TEST(DaemonStatus, is_of_the_run_that_goes_on_though_another_supervisor_was_refused_since)
{
    LogOfTests log;
    MachineOfTests machine;
    log.Begin();
    machine.Run(12, kImage, log.NowMs());
    log.Add(2, R"(Start DaemonId(0) PId(12) : C:\FW\App\a.exe )")
        .Begin()
        .Add(2, "Deamon Thread is exiting...");
    const auto daemons = StatusOf(log, machine);
    ASSERT_EQ(daemons.size(), 1U);
    EXPECT_EQ(daemons[0].state, RunState::running);
}

TEST(DaemonStatus, is_of_the_run_that_goes_on_when_the_rest_of_a_refused_one_stands_before_it)
{
    LogOfTests log;
    MachineOfTests machine;
    log.Add(2, "Deamon Thread started").Add(2, "Deamon Thread is exiting...");
    machine.Run(12, kImage, log.NowMs());
    log.Add(1, R"(Start DaemonId(0) PId(12) : C:\FW\App\a.exe )");
    const auto daemons = StatusOf(log, machine);
    ASSERT_EQ(daemons.size(), 1U);
    EXPECT_EQ(daemons[0].state, RunState::running);
    EXPECT_FALSE(daemons[0].restartsComplete);
}

TEST(DaemonStatus, is_nothing_when_every_run_has_ended)
{
    const Timeline ended = LogOfTests().Begin().End().Timeline();
    EXPECT_EQ(RunThatGoesOn(ended), nullptr);
    EXPECT_EQ(RunThatGoesOn(Timeline()), nullptr);
}

TEST(RunThatGoesOn, is_not_an_older_run_that_was_killed)
{
    LogOfTests log;
    log.Begin().Add(1, R"(Start DaemonId(0) PId(12) : C:\FW\App\a.exe )"); // and is killed
    log.Begin().Add(1, R"(Start DaemonId(0) PId(13) : C:\FW\App\b.exe )");
    Timeline timeline = log.Timeline();
    EXPECT_EQ(RunThatGoesOn(timeline), &timeline.runs[1]);
    log.End();
    timeline = log.Timeline();
    EXPECT_EQ(RunThatGoesOn(timeline), nullptr);
}

TEST(RunThatGoesOn, is_none_behind_a_run_that_looked_after_something_until_it_was_closed)
{
    for (const char* line :
         {R"(Attach DaemonId(0) PId(12) : C:\FW\App\a.exe )", "Exit",
          "1 Processes still registered", R"(Unable to start C:\no.exe )",
          "Unable to attach DaemonId(0) PId(7) : ", "Exception caught in : Unknown (0x3)"}) {
        LogOfTests log;
        log.Begin().Begin().Add(1, line).Add(2, "Deamon Thread is exiting...");
        const Timeline timeline = log.Timeline();
        EXPECT_EQ(RunThatGoesOn(timeline), nullptr) << line;
    }
}

TEST(RunThatGoesOn, is_the_one_beside_which_several_were_refused)
{
    LogOfTests log;
    log.Begin();
    for (int refused = 0; refused < 3; ++refused) {
        log.Begin().Add(2, "Deamon Thread is exiting...");
    }
    const Timeline timeline = log.Timeline();
    EXPECT_EQ(RunThatGoesOn(timeline), &timeline.runs[0]);
}

TEST(ReadableReason, makes_a_number_of_an_exit_code)
{
    EXPECT_EQ(ReadableReason("Unknown (0x0)"), "exit code 0");
    EXPECT_EQ(ReadableReason("Unknown (0xffff)"), "exit code 65535");
    EXPECT_EQ(ReadableReason("Unknown (0xffffffff)"), "exit code 0xffffffff");
    EXPECT_EQ(ReadableReason("Access violation"), "Access violation");
    EXPECT_EQ(ReadableReason("Unknown (0xzz)"), "Unknown (0xzz)");
    EXPECT_EQ(ReadableReason("Unknown (0x)"), "Unknown (0x)");
    EXPECT_EQ(ReadableReason("Unknown (0x1"), "Unknown (0x1");
}

std::vector<DaemonStatus> SomeDaemons()
{
    DaemonStatus running;
    running.id = 0;
    running.state = RunState::running;
    running.processId = 1234;
    running.process.processId = 1234;
    running.process.image = kImage;
    running.process.createdMs = 1'000'000;
    running.process.cpuMs = 500;
    running.process.memoryBytes = 1536 * 1024;
    running.restarts = 2;
    running.lastExit = LastExit{999'000, "Unknown (0x3)", true};
    running.command = "C:\\FW\\App\\a.exe \xC3\xBC ";
    DaemonStatus broken;
    broken.state = RunState::cannotStart;
    broken.restarts = 7;
    broken.restartsComplete = false;
    broken.lastExit = LastExit{998'000, "", false};
    broken.command = "no.exe ";
    DaemonStatus child = running;
    child.id = std::nullopt;
    child.inLog = false;
    child.lastExit = std::nullopt;
    return {running, broken, child};
}

std::string Plain(std::int64_t timeMs)
{
    return "t" + std::to_string(timeMs);
}

TEST(DaemonListing, is_a_table)
{
    EXPECT_EQ(
        ListingText(SomeDaemons(), 1'100'000, Plain),
        "ID  STATE          PID  UP SINCE  RESTARTS  LAST EXIT               CPU   MEMORY  COMMAND\n"
        " 0  running       1234  t1000000         2  exit code 3, t999000  0.5 %  1.5 MiB  "
        "C:\\FW\\App\\a.exe \xC3\xBC\n"
        " -  cannot start     -  -               7+  ? (likely), t998000       -        -  no.exe\n"
        " -  running       1234  t1000000         ?  ?                     0.5 %  1.5 MiB  "
        "C:\\FW\\App\\a.exe \xC3\xBC\n");
    EXPECT_EQ(ListingText({}, 0, Plain),
              "ID  STATE  PID  UP SINCE  RESTARTS  LAST EXIT  CPU  MEMORY  COMMAND\n");
}

TEST(DaemonListing, lets_no_text_command_the_terminal)
{
    DaemonStatus daemon;
    daemon.id = 1;
    daemon.state = RunState::ended;
    daemon.lastExit = LastExit{1, "\x1B[2J", true};
    daemon.command = "a.exe \n 2  running \x1B]0;x\x07\xC2\x9B ";
    EXPECT_EQ(ListingText({daemon}, 0, Plain),
              "ID  STATE  PID  UP SINCE  RESTARTS  LAST EXIT    CPU  MEMORY  COMMAND\n"
              " 1  ended    -  -                0  \\x1B[2J, t1    -       -  "
              "a.exe \\x0A 2  running \\x1B]0;x\\x07\\x9B\n");
}

TEST(DaemonListing, as_json_keeps_its_field_names)
{
    auto daemons = SomeDaemons();
    daemons.pop_back();
    EXPECT_EQ(ListingJson(daemons, 1'100'000, "1.0.0"), R"json({
  "version": "1.0.0",
  "time": "1970-01-01T00:18:20.000Z",
  "time_ms": 1100000,
  "daemons": [
    {
      "id": 0,
      "state": "running",
      "process_id": 1234,
      "image": "C:\\FW\\App\\a.exe",
      "up_since": "1970-01-01T00:16:40.000Z",
      "up_since_ms": 1000000,
      "restarts": 2,
      "restarts_complete": true,
      "last_exit": {
        "time": "1970-01-01T00:16:39.000Z",
        "time_ms": 999000,
        "reason": "Unknown (0x3)",
        "sure": true
      },
      "cpu_ms": 500,
      "cpu_percent": 0.5,
      "memory_bytes": 1572864,
      "attached": false,
      "service": false,
      "in_log": true,
      "command": "C:\\FW\\App\\a.exe ü"
    },
    {
      "id": null,
      "state": "cannot_start",
      "process_id": null,
      "image": null,
      "up_since": null,
      "up_since_ms": null,
      "restarts": 7,
      "restarts_complete": false,
      "last_exit": {
        "time": "1970-01-01T00:16:38.000Z",
        "time_ms": 998000,
        "reason": null,
        "sure": false
      },
      "cpu_ms": null,
      "cpu_percent": null,
      "memory_bytes": null,
      "attached": false,
      "service": false,
      "in_log": true,
      "command": "no.exe"
    }
  ]
}
)json");
}

TEST(DaemonListing, is_read_back)
{
    ListedProcess first{0, 1234, 1'000'000, kImage, "C:\\FW\\App\\a.exe \xC3\xBC", false};
    ListedProcess second = first;
    second.id = std::nullopt;
    EXPECT_EQ(ParseListing(ListingJson(SomeDaemons(), 0, "1")),
              (std::vector<ListedProcess>{first, second}));
}

TEST(DaemonListing, that_is_none_is_refused)
{
    for (const char* text : {"", "{", "[]", "{}", R"({"daemons":1})", R"({"daemons":[{}]})",
                             R"({"daemons":[{"state":"running","id":"x"}]})"}) {
        EXPECT_THROW(ParseListing(text), std::runtime_error) << text;
    }
}

TEST(WaitCondition, is_fulfilled_by_what_happens)
{
    const Observation unknown;
    const Observation down{true, false, false, std::nullopt, 0, 0};
    const Observation first{true, true, false, 12, 1000, 990};
    const Observation next{true, true, false, 13, 2000, 1990};
    const Observation sameId{true, true, false, 12, 2000, 1990};
    MachineOfTests runs; // the first process
    runs.Run(12, kImage, 990);
    MachineOfTests isGone;
    MachineOfTests isAnother;
    isAnother.Run(12, kImage, 1990);
    MachineOfTests isHidden;
    isHidden.processes[12].state = ProcessFacts::State::hidden;
    const auto isFulfilled = [](WaitFor what, const Observation& begun, const Observation& now,
                                const MachineOfTests& machine) {
        return IsFulfilled(what, begun, now, machine.Source().facts);
    };
    EXPECT_TRUE(isFulfilled(WaitFor::running, first, first, runs));
    EXPECT_TRUE(isFulfilled(WaitFor::running, down, next, isGone));
    EXPECT_FALSE(isFulfilled(WaitFor::running, first, down, isGone));
    EXPECT_FALSE(isFulfilled(WaitFor::running, unknown, unknown, isGone));
    EXPECT_FALSE(isFulfilled(WaitFor::ended, first, first, runs));
    EXPECT_TRUE(isFulfilled(WaitFor::ended, first, down, isGone));
    EXPECT_FALSE(isFulfilled(WaitFor::ended, first, down, runs));
    EXPECT_FALSE(isFulfilled(WaitFor::ended, first, down, isHidden));
    EXPECT_TRUE(isFulfilled(WaitFor::ended, first, next, isGone)); // and started again at once
    EXPECT_TRUE(isFulfilled(WaitFor::ended, first, sameId, isAnother));
    EXPECT_TRUE(isFulfilled(WaitFor::ended, down, down, isGone));
    EXPECT_FALSE(isFulfilled(WaitFor::ended, down, next, isGone));
    EXPECT_FALSE(isFulfilled(WaitFor::ended, unknown, unknown, isGone));
    EXPECT_FALSE(isFulfilled(WaitFor::restarted, first, first, runs));
    EXPECT_FALSE(isFulfilled(WaitFor::restarted, first, down, isGone));
    EXPECT_TRUE(isFulfilled(WaitFor::restarted, first, next, isGone));
    EXPECT_TRUE(isFulfilled(WaitFor::restarted, first, sameId, isAnother));
    EXPECT_TRUE(isFulfilled(WaitFor::restarted, down, next, isGone));
    EXPECT_FALSE(isFulfilled(WaitFor::restarted, unknown, unknown, isGone));
}

TEST(WaitCondition, does_not_call_a_process_ended_that_was_let_go_or_could_not_be_stopped)
{
    for (const char* line : {R"(Detached DaemonId(3) PId(12) : C:\FW\App\a.exe )",
                             R"(Unable to stop DaemonId(3) PId(12) : C:\FW\App\a.exe )"}) {
        LogOfTests log;
        MachineOfTests machine;
        log.Begin();
        machine.Run(12, kImage, log.NowMs());
        log.Add(2, R"(Start DaemonId(3) PId(12) : C:\FW\App\a.exe )");
        const ProcessSource source = machine.Source();
        const Observation first = Observe(log.Timeline().runs[0], 3, source);
        log.Add(1, line);
        const Timeline timeline = log.Timeline();
        const Observation now = Observe(timeline.runs[0], 3, source);
        EXPECT_TRUE(now.letGo) << line;
        EXPECT_FALSE(IsFulfilled(WaitFor::ended, first, now, source.facts)) << line;
        EXPECT_FALSE(IsFulfilled(WaitFor::ended, now, now, source.facts)) << line; // begun later
        EXPECT_FALSE(IsFulfilled(WaitFor::running, first, now, source.facts)) << line;
        EXPECT_FALSE(IsFulfilled(WaitFor::restarted, first, now, source.facts)) << line;
        machine.processes.erase(12);
        const Observation later = Observe(timeline.runs[0], 3, source);
        EXPECT_FALSE(later.letGo) << line;
        EXPECT_TRUE(IsFulfilled(WaitFor::ended, first, later, source.facts)) << line;
    }
}

RunMark MarkOfRun(const LogOfTests& log, std::size_t index)
{
    return MarkOf(log.Timeline().runs.at(index));
}

TEST(WaitCondition, is_not_fulfilled_by_a_daemon_of_another_run)
{
    const std::string start = R"(Start DaemonId(0) PId(12) : C:\FW\App\a.exe )";
    LogOfTests log;
    log.Begin();
    const RunMark begun = MarkOfRun(log, 0);
    log.Add(1, start);
    const RunMark killed = MarkOfRun(log, 0);
    EXPECT_TRUE(IsSameRun(begun, killed));
    log.Begin();
    const RunMark next = MarkOfRun(log, 1);
    EXPECT_FALSE(IsSameRun(killed, next));
    // Also when the ring no longer has the start of the one before, or of either.
    const RunMark cut{std::nullopt, false, killed.lastNumber};
    EXPECT_TRUE(IsSameRun(killed, cut));
    EXPECT_FALSE(IsSameRun(cut, next));
    EXPECT_FALSE(IsSameRun(next, cut));
}

TEST(WaitCondition, stays_with_its_run_while_that_is_beginning)
{
    LogOfTests log;
    log.Add(2, "Connecting to WMI resource ...");
    const RunMark before = MarkOfRun(log, 0);
    log.Add(2, "Deamon Thread started");
    EXPECT_TRUE(IsSameRun(before, MarkOfRun(log, 0)));
}

TEST(WaitCondition, observes_a_daemon_in_log_and_machine)
{
    LogOfTests log;
    MachineOfTests machine;
    log.Begin();
    machine.Run(12, kImage, log.NowMs());
    const std::int64_t startedMs = log.NowMs();
    log.Add(2, R"(Start DaemonId(3) PId(12) : C:\FW\App\a.exe )");
    Timeline timeline = log.Timeline();
    EXPECT_EQ(Observe(timeline.runs[0], 3, machine.Source()),
              (Observation{true, true, false, 12, startedMs, startedMs}));
    EXPECT_EQ(Observe(timeline.runs[0], 4, machine.Source()), Observation());
    log.Add(1, R"(Detached DaemonId(3) PId(12) : C:\FW\App\a.exe )");
    timeline = log.Timeline();
    EXPECT_EQ(Observe(timeline.runs[0], 3, machine.Source()),
              (Observation{true, false, true, 12, startedMs, startedMs}));
}

TEST(Expectations, find_a_daemon_for_each_program_or_say_why_not)
{
    const auto daemons = SomeDaemons();
    const auto programs = ParseExpectFile("a.exe\nno.exe\nother.exe\na.exe\na.exe\n").programs;
    const auto results = CheckExpectations(programs, daemons, 1'100'000, 0);
    ASSERT_EQ(results.size(), 5U);
    EXPECT_EQ(results[0].daemon, 0U);
    EXPECT_EQ(results[1].daemon, std::nullopt);
    EXPECT_EQ(results[1].note, "a daemon of this program cannot be started");
    EXPECT_EQ(results[2].note, "no daemon runs it");
    EXPECT_EQ(results[3].daemon, 2U);
    EXPECT_EQ(results[4].note, "no daemon runs it");
}

TEST(Expectations, do_not_count_what_has_just_been_started)
{
    const auto programs = ParseExpectFile("a.exe\n").programs;
    EXPECT_EQ(CheckExpectations(programs, SomeDaemons(), 1'059'999, 60000)[0].note,
              "daemon 0 has just been started");
    EXPECT_EQ(CheckExpectations(programs, SomeDaemons(), 1'060'000, 60000)[0].daemon, 0U);
}

} // namespace
} // namespace vqrx::test
