#include "ComSecurityCheck.h"

#include "ExpectFinding.h"

#include <gtest/gtest.h>

namespace vqrx::test {
namespace {

using namespace client::v0;

TEST(ComSecurityCheck, Names_the_callers_and_the_limits_of_the_machine)
{
    ComSecurityFacts facts;
    facts.known = true;
    ExpectFinding(JudgeComSecurity(facts), Verdict::kOk,
                  "every authenticated caller may call the supervisor; Windows' own limits hold");
    facts.machineLimits = true;
    ExpectFinding(
        JudgeComSecurity(facts), Verdict::kOk,
        "every authenticated caller may call the supervisor; the registry sets limits for "
        "all callers of this machine");
}

TEST(ComSecurityCheck, Warns_if_the_running_supervisor_could_not_set_the_security)
{
    ComSecurityFacts facts;
    facts.known = true;
    facts.failures = {"CoInitializeSecurity error 0x80010106"};
    ExpectFinding(JudgeComSecurity(facts), Verdict::kWarning,
                  "the supervisor could not set COM's security, so callers may go unchecked; "
                  "Windows' own limits hold\nCoInitializeSecurity error 0x80010106");
}

TEST(ComSecurityCheck, Claims_nothing_without_the_start_of_the_running_supervisor)
{
    const Finding finding = JudgeComSecurity({});
    ExpectFinding(finding, Verdict::kOk,
                  "not examined: no supervisor runs, or its log does not show its start any more");
}

TEST(ComSecurityCheck, Claims_nothing_if_records_of_the_running_supervisor_are_missing)
{
    ComSecurityFacts facts;
    facts.known = true;
    facts.recordsMissing = true;
    ExpectFinding(JudgeComSecurity(facts), Verdict::kOk,
                  "not known: the log lacks records of the running supervisor, and one of them may "
                  "say that it could not set COM's security; Windows' own limits hold");
    facts.failures = {"CoInitializeSecurity error 0x80010106"};
    EXPECT_EQ(JudgeComSecurity(facts).verdict, Verdict::kWarning);
}

TEST(ComSecurityCheck, Knows_the_record_of_the_failure)
{
    EXPECT_TRUE(IsComSecurityFailure("CoInitializeSecurity error 0x80010106"));
    EXPECT_FALSE(IsComSecurityFailure("Unable to start CoInitializeSecurity error "));
}

} // namespace
} // namespace vqrx::test
