#include "DaemonChecks.h"

#include <gtest/gtest.h>

namespace vqrx::test {
namespace {

using namespace client::v0;

TEST(JudgeDaemons, Daemons_that_run_are_counted)
{
    const Finding finding = JudgeDaemons({true, 1, {}, 0});
    EXPECT_EQ(finding.verdict, Verdict::kOk);
    EXPECT_EQ(finding.text, "1 daemon, 0 in trouble");
}

TEST(JudgeDaemons, Crash_loop_missing_program_and_ended_daemon_are_warnings_with_the_reason)
{
    using Kind = TroubledDaemon::Kind;
    const Finding finding = JudgeDaemons(
        {true,
         4,
         {{7, "C:\\a.exe -x", Kind::kEndsAgainAndAgain, 41, "Access violation", {}},
          {0, "C:\\b.exe", Kind::kEndsAgainAndAgain, 5, "", {}},
          {std::nullopt, "C:\\no.exe -y", Kind::kCannotStart, 0, "", {"C:\\no.exe does not exist"}},
          {3, "C:\\gone.exe", Kind::kLeftEnded, 0, "", {}}},
         0});
    EXPECT_EQ(finding.verdict, Verdict::kWarning);
    EXPECT_EQ(
        finding.text,
        "4 daemons, 4 in trouble\n"
        "daemon 7 ends again and again, 41 restarts in the last hour, last exit: Access violation: "
        "C:\\a.exe -x\n"
        "daemon 0 ends again and again, 5 restarts in the last hour: C:\\b.exe\n"
        "a daemon without a known id cannot be started: C:\\no.exe -y\n"
        "C:\\no.exe does not exist\n"
        "daemon 3 has ended and is not started again, for example because its exit code was 259: "
        "C:\\gone.exe");
    EXPECT_EQ(finding.remedy, "See when and how: daemonctl log --level 1 --tail 20\n"
                              "End one for good: daemonctl stop ID\n"
                              "To learn an id, launch the same program with the same arguments "
                              "again: daemonctl launch");
}

TEST(JudgeDaemons, Programs_of_a_former_supervisor_that_run_unwatched_are_a_warning)
{
    const Finding finding = JudgeDaemons({true, 1, {}, 2});
    EXPECT_EQ(finding.verdict, Verdict::kWarning);
    EXPECT_EQ(finding.text, "1 daemon, 0 in trouble\n"
                            "2 programs of the former supervisor run unwatched");
    EXPECT_EQ(finding.remedy, "Watch the programs of the former supervisor: daemonctl reattach");
    EXPECT_EQ(JudgeDaemons({true, 1, {}, 1}).text,
              "1 daemon, 0 in trouble\n1 program of the former supervisor runs unwatched");
}

TEST(JudgeDaemons, Without_a_supervisor_nothing_is_wrong_with_its_daemons)
{
    EXPECT_EQ(JudgeDaemons({}).verdict, Verdict::kOk);
    EXPECT_EQ(JudgeDaemons({}).text, "not examined: no supervisor runs, or its log cannot be read");
}

} // namespace
} // namespace vqrx::test
