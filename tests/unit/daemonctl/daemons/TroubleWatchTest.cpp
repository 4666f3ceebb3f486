#include "TroubleWatch.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace vqrx::test {
namespace {

using namespace client::v0;
using Kind = Trouble::Kind;
using testing::ElementsAre;
using testing::IsEmpty;

DaemonStatus InState(RunState state, std::uint32_t id = 3)
{
    DaemonStatus daemon;
    daemon.id = id;
    daemon.state = state;
    daemon.command = "a.exe -x ";
    daemon.recent.lastHour = 41;
    daemon.lastExit = LastExit{1, "Unknown (0x3)", true};
    return daemon;
}

std::vector<Kind> Kinds(const std::vector<Trouble>& troubles)
{
    std::vector<Kind> kinds;
    for (const Trouble& trouble : troubles) {
        kinds.push_back(trouble.kind);
    }
    return kinds;
}

class TroubleWatchTest : public testing::Test {
protected:
    std::vector<Kind> Look(std::int64_t nowMs,
                           const std::optional<std::vector<DaemonStatus>>& daemons)
    {
        return Kinds(watch_.Look(nowMs, daemons));
    }
    std::vector<Kind> Look(std::int64_t nowMs, RunState state)
    {
        return Look(nowMs, std::vector<DaemonStatus>{InState(state)});
    }
    TroubleWatch watch_{30'000};
};

TEST_F(TroubleWatchTest, Healthy_daemon_is_no_news)
{
    EXPECT_THAT(Look(0, RunState::kRunning), IsEmpty());
    EXPECT_THAT(Look(1, RunState::kEnded), IsEmpty());
    EXPECT_THAT(Look(2, RunState::kRunning), IsEmpty());
    EXPECT_THAT(Look(3, RunState::kUnknown), IsEmpty());
}

TEST_F(TroubleWatchTest, Crash_loop_is_told_once_when_it_begins_and_once_when_it_ends)
{
    EXPECT_THAT(Look(0, RunState::kRestarting),
                ElementsAre(Kind::kCrashLoopBegan)); // at the first look
    EXPECT_THAT(Look(1, RunState::kRestarting), IsEmpty());
    EXPECT_THAT(Look(2, RunState::kRunning), ElementsAre(Kind::kCrashLoopEnded));
    EXPECT_THAT(Look(3, RunState::kRunning), IsEmpty());
    EXPECT_THAT(Look(4, RunState::kRestarting), ElementsAre(Kind::kCrashLoopBegan));
}

TEST_F(TroubleWatchTest, Failed_start_is_told_when_it_begins_and_ends)
{
    EXPECT_THAT(Look(0, RunState::kCannotStart), ElementsAre(Kind::kCannotStart));
    EXPECT_THAT(Look(1, RunState::kCannotStart), IsEmpty());
    EXPECT_THAT(Look(2, RunState::kRunning), ElementsAre(Kind::kStartsAgain));
}

TEST_F(TroubleWatchTest, Daemon_that_had_no_id_while_it_could_not_be_started_is_told_to_start_again)
{
    DaemonStatus never = InState(RunState::kCannotStart);
    never.id.reset(); // the log shows the id from the first start on
    EXPECT_THAT(Look(0, std::vector<DaemonStatus>{never}), ElementsAre(Kind::kCannotStart));
    EXPECT_THAT(Look(1, RunState::kRunning), ElementsAre(Kind::kStartsAgain));
    EXPECT_THAT(Look(2, RunState::kRunning), IsEmpty());
}

TEST_F(TroubleWatchTest, Daemon_is_down_only_after_the_time_without_a_process)
{
    EXPECT_THAT(Look(0, RunState::kEnded), IsEmpty());
    EXPECT_THAT(Look(29'999, RunState::kEnded), IsEmpty());
    EXPECT_THAT(Look(30'000, RunState::kEnded), ElementsAre(Kind::kDown));
    EXPECT_THAT(Look(90'000, RunState::kEnded), IsEmpty());
    EXPECT_THAT(Look(90'001, RunState::kRunning), ElementsAre(Kind::kUpAgain));
    EXPECT_THAT(Look(90'002, RunState::kEnded), IsEmpty()); // the time begins again
    EXPECT_THAT(Look(120'002, RunState::kEnded), ElementsAre(Kind::kDown));
}

TEST_F(TroubleWatchTest, Lost_supervisor_is_told_and_its_daemons_are_new_when_it_is_back)
{
    EXPECT_THAT(Look(0, RunState::kRestarting), ElementsAre(Kind::kCrashLoopBegan));
    EXPECT_THAT(Look(1, std::nullopt), ElementsAre(Kind::kSupervisorLost));
    EXPECT_THAT(Look(2, std::nullopt), IsEmpty());
    EXPECT_THAT(Look(3, RunState::kRestarting),
                ElementsAre(Kind::kSupervisorBack, Kind::kCrashLoopBegan));
    EXPECT_THAT(Kinds(TroubleWatch(0).Look(0, std::nullopt)), ElementsAre(Kind::kSupervisorLost));
    EXPECT_THAT(Kinds(TroubleWatch(0).Look(0, std::vector<DaemonStatus>())), IsEmpty());
}

TEST_F(TroubleWatchTest,
       Supervisor_whose_log_cannot_be_read_is_not_lost_and_its_daemons_are_not_new)
{
    EXPECT_THAT(Look(0, RunState::kRestarting), ElementsAre(Kind::kCrashLoopBegan));
    EXPECT_THAT(Kinds(watch_.LookAtSupervisor(1)), IsEmpty());
    EXPECT_THAT(Look(2, RunState::kRestarting), IsEmpty());
    EXPECT_THAT(Look(3, std::nullopt), ElementsAre(Kind::kSupervisorLost));
    EXPECT_THAT(Kinds(watch_.LookAtSupervisor(4)), ElementsAre(Kind::kSupervisorBack));
}

TEST_F(TroubleWatchTest, Trouble_of_a_stopped_daemon_ends)
{
    EXPECT_THAT(Look(0, RunState::kRestarting), ElementsAre(Kind::kCrashLoopBegan));
    const auto troubles = watch_.Look(1, std::vector<DaemonStatus>());
    ASSERT_THAT(Kinds(troubles), ElementsAre(Kind::kCrashLoopEnded));
    EXPECT_EQ(DescribeChange(troubles[0]),
              "a.exe -x is no longer watched: a client stopped or detached it");
    EXPECT_EQ(troubles[0].daemonId, 3U);
    EXPECT_EQ(troubles[0].restartsLastHour, 41U);
    EXPECT_EQ(troubles[0].lastExit, "exit code 3");
    EXPECT_THAT(Look(2, std::vector<DaemonStatus>()), IsEmpty());
    EXPECT_THAT(Look(3, RunState::kCannotStart), ElementsAre(Kind::kCannotStart));
    EXPECT_THAT(Look(4, std::vector<DaemonStatus>()), ElementsAre(Kind::kStartsAgain));
    EXPECT_THAT(Look(5, RunState::kEnded), IsEmpty());
    EXPECT_THAT(Look(30'005, RunState::kEnded), ElementsAre(Kind::kDown));
    EXPECT_THAT(Look(30'006, std::vector<DaemonStatus>()), ElementsAre(Kind::kUpAgain));
    EXPECT_THAT(Look(30'007, RunState::kRunning), IsEmpty());
    EXPECT_THAT(Look(30'008, std::vector<DaemonStatus>()), IsEmpty());
}

TEST_F(TroubleWatchTest, Daemon_that_the_next_supervisor_does_not_have_was_not_stopped_by_a_client)
{
    const RunMark first{1000, true, 0, 5};
    const RunMark firstLater{1000, true, 0, 7};
    const RunMark second{2000, true, 8, 9};
    const std::vector<DaemonStatus> inTrouble = {InState(RunState::kRestarting)};
    const std::vector<DaemonStatus> none;
    const auto textAfter = [&](const RunMark& next) {
        TroubleWatch watch(0);
        EXPECT_EQ(watch.Look(0, inTrouble, first).size(), 1U);
        const auto troubles = watch.Look(1, none, next);
        EXPECT_THAT(Kinds(troubles), ElementsAre(Kind::kCrashLoopEnded));
        return troubles.empty() ? "" : DescribeChange(troubles[0]);
    };
    EXPECT_EQ(textAfter(firstLater),
              "a.exe -x is no longer watched: a client stopped or detached it");
    EXPECT_EQ(textAfter(second), "a.exe -x is no longer watched: the supervisor ended, and the one "
                                 "that runs now does not have it");
}

TEST_F(TroubleWatchTest, Trouble_goes_on_if_a_daemon_that_never_ran_gets_an_id)
{
    DaemonStatus daemon = InState(RunState::kCannotStart);
    daemon.id = std::nullopt;
    EXPECT_THAT(Look(0, std::vector<DaemonStatus>{daemon}), ElementsAre(Kind::kCannotStart));
    EXPECT_THAT(Look(1, RunState::kCannotStart), IsEmpty());
}

TEST_F(TroubleWatchTest, Change_of_a_daemon_has_its_facts_as_text_and_as_JSON)
{
    const auto troubles =
        watch_.Look(1000, std::vector<DaemonStatus>{InState(RunState::kRestarting)});
    EXPECT_EQ(
        DescribeChange(troubles.at(0)),
        "a.exe -x ends again and again: 41 restarts in the last hour, last exit: exit code 3");
    EXPECT_EQ(
        TroublesJson(troubles, 2000, "1.0.0"),
        R"({"version":"1.0.0","time":"1970-01-01T00:00:02.000Z","time_ms":2000,"events":[)"
        R"({"event":"crash-loop-began","text":"a.exe -x ends again and again: 41 restarts in )"
        R"(the last hour, last exit: exit code 3","time_ms":1000,"id":3,"command":"a.exe -x",)"
        R"("restarts_last_hour":41,"last_exit":"exit code 3"}]})"
        "\n");
    EXPECT_EQ(TroublesJson(watch_.Look(3000, std::nullopt), 3000, "1"),
              R"({"version":"1","time":"1970-01-01T00:00:03.000Z","time_ms":3000,"events":[)"
              R"({"event":"supervisor-lost","text":"the supervisor does not run, or does not )"
              R"(answer","time_ms":3000}]})"
              "\n");
}

} // namespace
} // namespace vqrx::test
