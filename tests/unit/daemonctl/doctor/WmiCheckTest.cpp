#include "WmiCheck.h"

#include "ExpectFinding.h"

#include <gtest/gtest.h>

namespace vqrx::test {
namespace {

using namespace client::v0;

constexpr long kAccessDenied = static_cast<long>(0x80070005U - 0x100000000LL);

WmiFacts HealthyWmi()
{
    WmiFacts facts;
    facts.answered = true;
    facts.knowsThisProcess = true;
    facts.executablePathFits = true;
    return facts;
}

TEST(WmiCheck, Is_ok_if_wmi_reports_path_and_command_line)
{
    ExpectFinding(JudgeWmi(HealthyWmi()), Verdict::kOk,
                  "WMI reports the executable path and the command line of a process");
}

TEST(WmiCheck, Fails_if_wmi_does_not_answer_or_cannot_be_reached)
{
    ExpectFinding(JudgeWmi(WmiFacts()), Verdict::kFailure, "WMI does not answer");
    WmiFacts facts = HealthyWmi();
    facts.connectFailure = "COM Error x";
    ExpectFinding(JudgeWmi(facts), Verdict::kFailure,
                  R"(no connection to root\cimv2: COM Error x)");
}

TEST(WmiCheck, Fails_if_the_query_fails_or_finds_no_process)
{
    WmiFacts facts = HealthyWmi();
    facts.knowsThisProcess = false;
    ExpectFinding(JudgeWmi(facts), Verdict::kFailure, "WMI does not find a process that runs");
    facts.queryResult = kAccessDenied;
    ExpectFinding(JudgeWmi(facts), Verdict::kFailure, "the query for a process fails: 0x80070005");
}

TEST(WmiCheck, Fails_if_path_or_command_line_are_refused_or_wrong)
{
    WmiFacts facts = HealthyWmi();
    facts.executablePathFits = false;
    ExpectFinding(JudgeWmi(facts), Verdict::kFailure, "WMI reports a wrong executable path");
    facts.commandLineResult = kAccessDenied;
    ExpectFinding(JudgeWmi(facts), Verdict::kFailure,
                  "WMI does not report the command line of a process: 0x80070005");
    facts.executablePathResult = kAccessDenied;
    ExpectFinding(JudgeWmi(facts), Verdict::kFailure,
                  "WMI does not report the executable path of a process: 0x80070005");
}

} // namespace
} // namespace vqrx::test
