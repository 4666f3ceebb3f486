#include "WaitCondition.h"

#include "FakeLog.h"
#include "FakeMachine.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace vqrx::test {
namespace {

using namespace client::v0;

constexpr const char* kProgramPath = R"(C:\FW\App\a.exe)";

// Observations of one daemon, and machines on which its first process, 12, may still run.
class WaitConditionOfOneDaemon : public ::testing::Test {
protected:
    WaitConditionOfOneDaemon()
    {
        runs.Run(12, kProgramPath, 990);
        isAnother.Run(12, kProgramPath, 1990);
        isHidden.processes[12].state = ProcessFacts::State::kHidden;
    }

    static bool IsFulfilled(WaitFor what, const Observation& begun, const Observation& now,
                            const FakeMachine& machine)
    {
        return client::v0::IsFulfilled(what, begun, now, machine.Source().facts);
    }

    const Observation unknown;
    const Observation down{true, false, false, std::nullopt, 0, 0};
    const Observation first{true, true, false, 12, 1000, 990};
    const Observation next{true, true, false, 13, 2000, 1990};
    const Observation sameId{true, true, false, 12, 2000, 1990};
    FakeMachine runs;      // process 12 is the first process
    FakeMachine isGone;    // no process has the id 12
    FakeMachine isAnother; // a later process has the id 12
    FakeMachine isHidden;  // process 12 may not be examined
};

TEST_F(WaitConditionOfOneDaemon, Running_is_fulfilled_while_the_daemon_has_a_process)
{
    EXPECT_TRUE(IsFulfilled(WaitFor::kRunning, first, first, runs));
    EXPECT_TRUE(IsFulfilled(WaitFor::kRunning, down, next, isGone));
    EXPECT_FALSE(IsFulfilled(WaitFor::kRunning, first, down, isGone));
    EXPECT_FALSE(IsFulfilled(WaitFor::kRunning, unknown, unknown, isGone));
}

TEST_F(WaitConditionOfOneDaemon, Ended_is_fulfilled_when_the_first_process_is_gone)
{
    EXPECT_FALSE(IsFulfilled(WaitFor::kEnded, first, first, runs));
    EXPECT_TRUE(IsFulfilled(WaitFor::kEnded, first, down, isGone));
    EXPECT_FALSE(IsFulfilled(WaitFor::kEnded, first, down, runs));
    EXPECT_FALSE(IsFulfilled(WaitFor::kEnded, first, down, isHidden));
    EXPECT_TRUE(IsFulfilled(WaitFor::kEnded, first, next, isGone)); // the next one runs already
    EXPECT_TRUE(IsFulfilled(WaitFor::kEnded, first, sameId, isAnother));
    EXPECT_TRUE(IsFulfilled(WaitFor::kEnded, down, down, isGone));
    EXPECT_FALSE(IsFulfilled(WaitFor::kEnded, down, next, isGone));
    EXPECT_FALSE(IsFulfilled(WaitFor::kEnded, unknown, unknown, isGone));
}

TEST_F(WaitConditionOfOneDaemon, Restarted_is_fulfilled_when_another_process_runs)
{
    EXPECT_FALSE(IsFulfilled(WaitFor::kRestarted, first, first, runs));
    EXPECT_FALSE(IsFulfilled(WaitFor::kRestarted, first, down, isGone));
    EXPECT_TRUE(IsFulfilled(WaitFor::kRestarted, first, next, isGone));
    EXPECT_TRUE(IsFulfilled(WaitFor::kRestarted, first, sameId, isAnother));
    EXPECT_TRUE(IsFulfilled(WaitFor::kRestarted, down, next, isGone));
    EXPECT_FALSE(IsFulfilled(WaitFor::kRestarted, unknown, unknown, isGone));
}

TEST(WaitCondition, Process_that_was_detached_or_could_not_be_stopped_has_not_ended)
{
    for (const char* line : {R"(Detached DaemonId(3) PId(12) : C:\FW\App\a.exe )",
                             R"(Unable to stop DaemonId(3) PId(12) : C:\FW\App\a.exe )"}) {
        FakeLog log;
        FakeMachine machine;
        log.Begin();
        machine.Run(12, kProgramPath, log.NowMs());
        log.Add(2, R"(Start DaemonId(3) PId(12) : C:\FW\App\a.exe )");
        const ProcessSource source = machine.Source();
        const Observation first = Observe(log.Timeline().runs[0], 3, source);
        log.Add(1, line);
        const Timeline timeline = log.Timeline();
        const Observation now = Observe(timeline.runs[0], 3, source);
        EXPECT_TRUE(now.letGo) << line;
        EXPECT_FALSE(IsFulfilled(WaitFor::kEnded, first, now, source.facts)) << line;
        EXPECT_FALSE(IsFulfilled(WaitFor::kEnded, now, now, source.facts))
            << line; // the wait began later
        EXPECT_FALSE(IsFulfilled(WaitFor::kRunning, first, now, source.facts)) << line;
        EXPECT_FALSE(IsFulfilled(WaitFor::kRestarted, first, now, source.facts)) << line;
        machine.processes.erase(12);
        const Observation later = Observe(timeline.runs[0], 3, source);
        EXPECT_FALSE(later.letGo) << line;
        EXPECT_TRUE(IsFulfilled(WaitFor::kEnded, first, later, source.facts)) << line;
    }
}

RunMark MarkOfRun(const FakeLog& log, std::size_t index)
{
    return MarkOf(log.Timeline().runs.at(index));
}

TEST(RunMark, Mark_of_a_later_run_is_not_that_of_the_same_run)
{
    const std::string start = R"(Start DaemonId(0) PId(12) : C:\FW\App\a.exe )";
    FakeLog log;
    log.Begin();
    const RunMark begun = MarkOfRun(log, 0);
    log.Add(1, start);
    const RunMark killed = MarkOfRun(log, 0);
    EXPECT_TRUE(IsSameRun(begun, killed));
    log.Begin();
    const RunMark next = MarkOfRun(log, 1);
    EXPECT_FALSE(IsSameRun(killed, next));
    // The result is the same if the ring no longer holds the start of the earlier run, or of both.
    const RunMark cut{std::nullopt, false, killed.firstNumber, killed.lastNumber};
    EXPECT_TRUE(IsSameRun(killed, cut));
    EXPECT_FALSE(IsSameRun(cut, next));
    EXPECT_FALSE(IsSameRun(next, cut));
}

TEST(RunMark, Mark_of_a_later_run_that_has_not_logged_its_start_is_not_that_of_the_same_run)
{
    FakeLog log;
    const RunMark killed = MarkOfRun(log.Begin(), 0);
    log.Add(2, "Detected Windows Firewall with Advanced Security");
    const RunMark next = MarkOfRun(log, 1);
    EXPECT_EQ(std::nullopt, next.startedMs);
    EXPECT_FALSE(IsSameRun(killed, next));
}

TEST(RunMark, Mark_taken_before_the_start_was_logged_is_of_the_same_run)
{
    FakeLog log;
    log.Add(2, "Connecting to WMI resource ...");
    const RunMark before = MarkOfRun(log, 0);
    log.Add(2, "Deamon Thread started");
    EXPECT_TRUE(IsSameRun(before, MarkOfRun(log, 0)));
}

TEST(WaitCondition, Observation_shows_the_process_of_the_daemon_and_whether_it_is_supervised)
{
    FakeLog log;
    FakeMachine machine;
    log.Begin();
    machine.Run(12, kProgramPath, log.NowMs());
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

} // namespace
} // namespace vqrx::test
