#include "DaemonChecks.h"

#include <gtest/gtest.h>

namespace vqrx::test {
namespace {

using namespace client::v0;

TEST(JudgeDaemons, Daemons_that_run_are_counted)
{
    const Finding finding = JudgeDaemons({true, 1, {}});
    EXPECT_EQ(finding.verdict, Verdict::kOk);
    EXPECT_EQ(finding.text, "1 daemon, 0 in trouble");
}

TEST(JudgeDaemons, Crash_loop_and_missing_program_are_warnings_with_the_reason)
{
    const Finding finding = JudgeDaemons({true,
                                          3,
                                          {{"C:\\a.exe -x", false, 41, "Access violation"},
                                           {"C:\\b.exe", false, 5, ""},
                                           {"C:\\no.exe", true, 0, ""}}});
    EXPECT_EQ(finding.verdict, Verdict::kWarning);
    EXPECT_EQ(finding.text,
              "3 daemons, 3 in trouble\n"
              "ends again and again, 41 restarts in the last hour, last exit: Access violation: "
              "C:\\a.exe -x\n"
              "ends again and again, 5 restarts in the last hour: C:\\b.exe\n"
              "cannot be started: C:\\no.exe");
    EXPECT_NE(finding.remedy.find("daemonctl log --level 1 --since 1h"), std::string::npos);
}

TEST(JudgeDaemons, Without_a_supervisor_nothing_is_wrong_with_its_daemons)
{
    EXPECT_EQ(JudgeDaemons({}).verdict, Verdict::kOk);
    EXPECT_EQ(JudgeDaemons({}).text, "not examined: no supervisor runs, or its log cannot be read");
}

} // namespace
} // namespace vqrx::test
