#include "DaemonStatus.h"

#include "FakeLog.h"
#include "FakeMachine.h"

#include <gtest/gtest.h>

namespace vqrx::test {
namespace {

using namespace client::v0;

// Returns the state of the only daemon of the log.
DaemonStatus StatusIn(const FakeLog& log, const FakeMachine& machine)
{
    const Timeline timeline = log.Timeline();
    return StatusOfDaemons(*RunThatGoesOn(timeline), machine.Source(), log.NowMs(), {}).at(0);
}

TEST(IsLeftEnded, Daemon_is_left_ended_if_some_passes_do_not_start_it_again)
{
    FakeLog log;
    FakeMachine machine;
    log.Begin().Add(2, R"(Start DaemonId(0) PId(12) : C:\FW\App\a.exe )");
    const std::int64_t endedMs = log.NowMs();
    EXPECT_FALSE(IsLeftEnded(StatusIn(log, machine), endedMs + 60000)); // when is not known
    machine.processes[12].endedMs = endedMs; // of an ended process that somebody holds open
    const DaemonStatus daemon = StatusIn(log, machine);
    EXPECT_EQ(daemon.endedMs, endedMs);
    EXPECT_FALSE(IsLeftEnded(daemon, endedMs + 5000));
    EXPECT_TRUE(IsLeftEnded(daemon, endedMs + 5001));
    EXPECT_FALSE(IsLeftEnded(daemon, endedMs - 5000));
    EXPECT_TRUE(IsLeftEnded(daemon, endedMs - 5001)); // the clock was set back
    machine.Run(12, R"(C:\FW\App\a.exe)", endedMs);
    EXPECT_FALSE(IsLeftEnded(StatusIn(log, machine), endedMs + 60000));
}

TEST(WasTriedLately, A_failure_counts_for_15_seconds_and_not_after_the_clock_was_set_back)
{
    constexpr std::int64_t kFailed = 1'000'000'000'000;
    EXPECT_FALSE(WasTriedLately({}, kFailed));
    EXPECT_TRUE(WasTriedLately({kFailed - 60000, kFailed}, kFailed + 15000));
    EXPECT_FALSE(WasTriedLately({kFailed}, kFailed + 15001));
    EXPECT_TRUE(WasTriedLately({kFailed}, kFailed - 15000)); // a look just before the record
    EXPECT_FALSE(WasTriedLately({kFailed}, kFailed - 15001));
}

} // namespace
} // namespace vqrx::test
