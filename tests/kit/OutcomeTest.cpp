#include "Outcome.h"

#include <gtest/gtest.h>

#include <string>

namespace vqrx::kit {
namespace {

// As GoogleTest writes it: one case that passed, one that failed, one that the machine refused, and
// one that was not chosen.
constexpr const char* kResults = R"({"tests": 4, "testsuites": [
  {"name": "Ring", "testsuite": [
    {"name": "A_passes", "status": "RUN", "result": "COMPLETED", "time": "0.25s", "classname": "Ring"},
    {"name": "B_fails", "status": "RUN", "result": "COMPLETED", "time": "1s", "classname": "Ring",
     "failures": [{"failure": "Ring.cpp:7\nValue of: x", "type": ""},
                  {"failure": "not possible on this machine: y", "type": ""}]}]},
  {"name": "Scene", "testsuite": [
    {"name": "C_refused", "status": "RUN", "time": "0s",
     "failures": [{"failure": "C++ exception with description \"not possible on this machine: no\"",
                   "type": ""}]},
    {"name": "D_not_chosen", "status": "NOTRUN", "time": "0s"}]}]})";

ProgramOutcome Judged(const std::string& json, const ProgramEnd& end,
                      const std::string& output = {})
{
    ProgramOutcome outcome;
    outcome.cases = ReadCases(json);
    outcome.output = output;
    Judge(outcome, end);
    return outcome;
}

std::string OneCase(const std::string& failure)
{
    return R"({"testsuites": [{"name": "S", "testsuite": [{"name": "c", "status": "RUN",
        "time": "0s", "failures": [{"failure": ")" +
           failure + R"("}]}]}]})";
}

TEST(Outcome, Cases_have_their_verdict_their_time_and_their_messages)
{
    const auto cases = ReadCases(kResults);
    ASSERT_EQ(cases.size(), 3U);
    EXPECT_EQ(cases[0].name, "Ring.A_passes");
    EXPECT_EQ(cases[0].verdict, Verdict::kPassed);
    EXPECT_EQ(cases[0].seconds, 0.25);
    EXPECT_EQ(cases[1].verdict, Verdict::kFailed);
    EXPECT_EQ(cases[1].message, "Ring.cpp:7\nValue of: x\nnot possible on this machine: y\n");
    EXPECT_EQ(cases[2].name, "Scene.C_refused");
    EXPECT_EQ(cases[2].verdict, Verdict::kNotPossible);
}

TEST(Outcome, A_text_that_is_no_result_has_no_cases)
{
    for (const char* text : {"", "{", R"({"testsuites": 3})", "[]"}) {
        EXPECT_TRUE(ReadCases(text).empty()) << text;
    }
}

TEST(Outcome, A_program_that_ends_with_0_has_passed)
{
    const ProgramOutcome outcome = Judged("", {});
    EXPECT_EQ(outcome.verdict, Verdict::kPassed);
    EXPECT_EQ(outcome.reason, "");
}

TEST(Outcome, A_program_that_ends_with_0_without_its_results_has_failed)
{
    const ProgramOutcome outcome = Judged("", {false, false, 0, false});
    EXPECT_EQ(outcome.verdict, Verdict::kFailed);
    EXPECT_EQ(outcome.reason, "ended with exit code 0 and left no results");
}

TEST(Outcome, A_program_that_crashes_after_a_refusal_has_failed)
{
    const ProgramOutcome outcome =
        Judged(OneCase("not possible on this machine: no"), {false, false, 3221225477U});
    EXPECT_EQ(outcome.verdict, Verdict::kFailed);
    EXPECT_EQ(outcome.reason, "ended with exit code 3221225477");
}

TEST(Outcome, A_failed_case_outweighs_a_refused_one)
{
    const ProgramOutcome outcome = Judged(kResults, {false, false, 1});
    EXPECT_EQ(outcome.verdict, Verdict::kFailed);
    EXPECT_EQ(outcome.reason, "1 of 3 cases failed");
}

TEST(Outcome, A_program_whose_only_failures_are_refusals_is_not_possible)
{
    const ProgramOutcome outcome =
        Judged(OneCase("not possible on this machine: no"), {false, false, 1});
    EXPECT_EQ(outcome.verdict, Verdict::kNotPossible);
    EXPECT_EQ(outcome.reason, "1 of 1 cases are not possible on this machine");
}

TEST(Outcome, A_refusal_before_the_first_case_is_read_from_the_output)
{
    const ProgramOutcome outcome =
        Judged("", {false, false, 1}, "endurance: not possible on this machine: no firewall\r\n");
    EXPECT_EQ(outcome.verdict, Verdict::kNotPossible);
    EXPECT_EQ(outcome.reason, "not possible on this machine: no firewall");
}

TEST(Outcome, Cases_that_are_skipped_because_their_set_up_was_refused_are_not_possible)
{
    const char* const skipped = R"({"testsuites": [{"name": "Scene", "testsuite": [
        {"name": "A", "status": "RUN", "result": "SKIPPED", "time": "0s"}]}]})";
    const ProgramOutcome refused =
        Judged(skipped, {false, false, 1}, "exception \"not possible on this machine: no\" thrown");
    EXPECT_EQ(refused.verdict, Verdict::kNotPossible);
    EXPECT_EQ(refused.cases.at(0).verdict, Verdict::kNotPossible);
    EXPECT_EQ(refused.cases.at(0).message, "not possible on this machine: no");
    const ProgramOutcome failed = Judged(skipped, {false, false, 1}, "another exception thrown");
    EXPECT_EQ(failed.verdict, Verdict::kFailed);
    EXPECT_EQ(failed.cases.at(0).verdict, Verdict::kLeftOut);
}

TEST(Outcome, A_crash_is_a_failure_with_its_exit_code)
{
    const ProgramOutcome outcome = Judged("", {false, false, 3221225477U});
    EXPECT_EQ(outcome.verdict, Verdict::kFailed);
    EXPECT_EQ(outcome.reason, "ended with exit code 3221225477");
}

TEST(Outcome, A_program_that_was_ended_failed_at_its_limit_and_is_left_out_by_an_interruption)
{
    EXPECT_EQ(Judged("", {true, false, 0}).verdict, Verdict::kFailed);
    EXPECT_EQ(Judged("", {true, false, 0}).reason,
              "did not end within its time limit and was ended");
    EXPECT_EQ(Judged(kResults, {false, true, 1}).verdict, Verdict::kLeftOut);
}

} // namespace
} // namespace vqrx::kit
