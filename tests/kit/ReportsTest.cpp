#include "Reports.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <string>

namespace vqrx::kit {
namespace {

RunReport Example()
{
    RunReport report;
    report.version = "1.0.0";
    report.commit = "abc";
    report.begin = "2026-11-22T08:30:00+01:00";
    report.seconds = 61.5;
    report.facts = {{"Windows", "11 <home>"}};
    ProgramOutcome good;
    good.name = "unit_good";
    good.verdict = Verdict::kPassed;
    good.seconds = 1.5;
    good.cases = {{"A.b", Verdict::kPassed, 0.5, ""}};
    ProgramOutcome bad;
    bad.name = "unit_bad";
    bad.verdict = Verdict::kFailed;
    bad.reason = "1 of 2 cases failed";
    bad.cases = {{"C.d", Verdict::kFailed, 0, "x < y"},
                 {"C.e", Verdict::kNotPossible, 0, "not possible on this machine: z"}};
    bad.output = "it printed this";
    ProgramOutcome crashed;
    crashed.name = "unit_crashed";
    crashed.verdict = Verdict::kFailed;
    crashed.reason = "ended with exit code 5";
    ProgramOutcome waiting;
    waiting.name = "unit_waiting";
    waiting.reason = "needs the rights of an administrator";
    report.programs = {good, bad, crashed, waiting};
    report.notInKit = {{"shell_test", "needs a shell"}};
    report.undone = {"removed the service X"};
    return report;
}

TEST(Reports, Programs_and_cases_are_counted_by_their_verdict)
{
    const Counts programs = CountPrograms(Example());
    EXPECT_EQ(programs.passed, 1U);
    EXPECT_EQ(programs.failed, 2U);
    EXPECT_EQ(programs.notPossible, 0U);
    EXPECT_EQ(programs.leftOut, 1U);
    const Counts cases = CountCases(Example());
    EXPECT_EQ(cases.passed, 1U);
    EXPECT_EQ(cases.failed, 1U);
    EXPECT_EQ(cases.notPossible, 1U);
}

TEST(Reports, A_run_is_green_without_failures_leftovers_and_interruption)
{
    RunReport report;
    EXPECT_TRUE(IsGreen(report));
    report.leftOver = {"a file"};
    EXPECT_FALSE(IsGreen(report));
    report.leftOver.clear();
    report.interrupted = true;
    EXPECT_FALSE(IsGreen(report));
    EXPECT_FALSE(IsGreen(Example()));
}

TEST(Reports, The_summary_says_that_somebody_stopped_the_run)
{
    RunReport report;
    EXPECT_EQ(SummaryOf(report),
              "0 programs passed (0 cases), 0 failed (0 cases), 0 not possible on "
              "this machine (0 cases), 0 left out.");
    report.interrupted = true;
    EXPECT_NE(SummaryOf(report).find("0 left out; the run was stopped."), std::string::npos);
}

TEST(Reports, The_report_for_machines_holds_everything)
{
    const auto content = nlohmann::json::parse(ReportAsJson(Example()));
    EXPECT_EQ(content.at("green"), false);
    EXPECT_EQ(content.at("seconds"), 61.5);
    EXPECT_EQ(content.at("facts").at("Windows"), "11 <home>");
    EXPECT_EQ(content.at("countOfPrograms").at("failed"), 2);
    EXPECT_EQ(content.at("countOfCases").at("notPossible"), 1);
    EXPECT_EQ(content.at("programs").at(1).at("cases").at(0).at("message"), "x < y");
    EXPECT_EQ(content.at("programs").at(3).at("verdict"), "left out");
    EXPECT_EQ(content.at("notInKit").at(0).at("name"), "shell_test");
    EXPECT_EQ(content.at("undone").at(0), "removed the service X");
}

TEST(Reports, Output_that_is_no_UTF8_does_not_spoil_the_report)
{
    RunReport report = Example();
    report.programs[1].output = "M\xFCller\x1B[0m";
    EXPECT_EQ(nlohmann::json::parse(ReportAsJson(report)).at("programs").at(1).at("output"),
              "M\xEF\xBF\xBDller\x1B[0m");
}

TEST(Reports, JUnit_has_a_suite_for_each_program_and_a_case_for_each_case)
{
    EXPECT_EQ(ReportAsJUnit(Example()), R"(<?xml version="1.0" encoding="UTF-8"?>
<testsuites name="DaemonManager 1.0.0" time="61.500">
  <testsuite name="unit_good" tests="1" failures="0" skipped="0" time="1.500">
    <testcase classname="unit_good" name="A.b" time="0.500"/>
  </testsuite>
  <testsuite name="unit_bad" tests="2" failures="1" skipped="1" time="0.000">
    <testcase classname="unit_bad" name="C.d" time="0.000">
      <failure>x &lt; y</failure>
    </testcase>
    <testcase classname="unit_bad" name="C.e" time="0.000">
      <skipped message="not possible on this machine: z"/>
    </testcase>
  </testsuite>
  <testsuite name="unit_crashed" tests="1" failures="1" skipped="0" time="0.000">
    <testcase classname="unit_crashed" name="unit_crashed" time="0.000">
      <failure>ended with exit code 5
</failure>
    </testcase>
  </testsuite>
  <testsuite name="unit_waiting" tests="1" failures="0" skipped="1" time="0.000">
    <testcase classname="unit_waiting" name="unit_waiting" time="0.000">
      <skipped message="needs the rights of an administrator"/>
    </testcase>
  </testsuite>
</testsuites>
)");
}

TEST(Reports, The_page_shows_facts_results_and_what_did_not_pass)
{
    const std::string page = ReportAsHtml(Example());
    for (const char* text :
         {"<title>DaemonManager 1.0.0: test report</title>", "11 &lt;home&gt;",
          "1 program passed (1 case), 2 failed (1 case), 0 not possible on this machine (1 case), "
          "1 left out.",
          "class=\"verdict failed\"", "<td>unit_bad</td><td>failed</td>", "x &lt; y",
          "it printed this", "ended with exit code 5", "shell_test", "needs a shell",
          "removed the service X"}) {
        EXPECT_NE(page.find(text), std::string::npos) << text;
    }
    EXPECT_EQ(page.find("Left over"), std::string::npos);
    EXPECT_EQ(page.find("Figures"), std::string::npos);
}

TEST(Reports, The_page_shows_what_a_program_printed_before_somebody_stopped_it)
{
    RunReport report;
    ProgramOutcome stopped;
    stopped.name = "unit_hangs";
    stopped.reason = "the run was stopped while this program ran";
    stopped.output = "[ RUN      ] Hangs.here";
    report.programs = {stopped};
    EXPECT_NE(ReportAsHtml(report).find("[ RUN      ] Hangs.here"), std::string::npos);
}

TEST(Reports, The_page_shows_the_figures_of_programs_that_passed)
{
    RunReport report = Example();
    report.programs[0].output = "ring 0.8 us";
    const std::string page = ReportAsHtml(report);
    EXPECT_NE(page.find("<h2>Figures</h2>"), std::string::npos);
    EXPECT_NE(page.find("ring 0.8 us"), std::string::npos);
}

} // namespace
} // namespace vqrx::kit
