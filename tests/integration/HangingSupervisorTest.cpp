// What an operator gets while the supervisor hangs: a suspended process.
#include "ChildProcess.h"
#include "Daemonctl.h"
#include "SupervisorProcess.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace vqrx::test {
namespace {

constexpr const char* kHangs =
    "daemonctl: the supervisor has not answered for 10 s; it may no longer "
    "restart programs\n  To find out more: daemonctl doctor\n";

// Each call has a supervisor of its own: under Wine only the first caller of a supervisor that
// hangs waits, and the next ones are refused.
Answer AnswerWhileSupervisorHangs(const std::string& arguments)
{
    SupervisorProcess supervisor;
    const std::string program = TestProgram("no_windows");
    EXPECT_EQ(Daemonctl("launch \"" + program + "\" one").exitCode, 0U);
    EXPECT_NE(supervisor.WaitForStart(0), 0U);
    EXPECT_TRUE(SuspendProcess(supervisor.Process().Pid()));
    EXPECT_EQ(Daemonctl("--daemon-ids"), (Answer{0, "0 " + program + " one\n", ""}));
    Answer answer = Daemonctl(arguments);
    supervisor.Process().Kill(); // or the end of this function would wait for its answer
    EXPECT_TRUE(supervisor.Process().Wait());
    return answer;
}

TEST(HangingSupervisor, Ps_shows_the_daemons_and_says_that_the_supervisor_hangs)
{
    const Answer ps = AnswerWhileSupervisorHangs("ps");
    EXPECT_EQ(ps.exitCode, 4U);
    EXPECT_EQ(ps.error, kHangs);
    EXPECT_THAT(ps.output, ::testing::HasSubstr("\n 0  running "));
}

TEST(HangingSupervisor, A_call_ends_and_says_that_the_supervisor_hangs)
{
    EXPECT_EQ(AnswerWhileSupervisorHangs("launch C:\\no\\such.exe"), (Answer{4, "", kHangs}));
}

TEST(HangingSupervisor, The_report_is_written_and_says_that_the_supervisor_does_not_answer)
{
    const Answer report = AnswerWhileSupervisorHangs("report --output -");
    EXPECT_EQ(report.exitCode, 0U) << report;
    EXPECT_THAT(report.output, ::testing::HasSubstr("The supervisor does not answer."));
}

TEST(HangingSupervisor, Wait_judges_by_the_log_and_says_that_the_supervisor_hangs)
{
    const Answer wait = AnswerWhileSupervisorHangs("wait 0 --for ended --timeout 0");
    EXPECT_EQ(wait.exitCode, 1U);
    EXPECT_THAT(wait.error,
                ::testing::StartsWith(std::string(kHangs) + "daemonctl: daemon 0 was not ended "));
    EXPECT_THAT(wait.error, ::testing::EndsWith("\n  To see what happened: daemonctl log --tail 10 "
                                                "--daemon 0\n"));
}

} // namespace
} // namespace vqrx::test
