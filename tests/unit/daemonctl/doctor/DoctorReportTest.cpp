#include "DoctorReport.h"

#include "AllocationFault.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <new>
#include <string>
#include <vector>

namespace vqrx::test {
namespace {

using namespace client::v0;

const std::vector<Finding> kFindings = {
    {"rights", Verdict::kOk, "this command runs as administrator", ""},
    {"firewall-rules", Verdict::kWarning, "1 gone\ngone: \"allowing C:\\a.exe\"", "Prune."},
    {"supervisor", Verdict::kFailure, "not running", "Start it."}};

TEST(DoctorReport, Text_has_a_line_for_each_finding_and_its_remedy_below)
{
    EXPECT_EQ(DoctorText(kFindings),
              "ok       rights            this command runs as administrator\n"
              "warning  firewall-rules    1 gone\n"
              "                             gone: \"allowing C:\\a.exe\"\n"
              "                           -> Prune.\n"
              "failure  supervisor        not running\n"
              "                           -> Start it.\n"
              "1 ok, 1 warning, 1 failure\n");
}

TEST(DoctorReport, Control_characters_are_visible_in_the_text)
{
    EXPECT_EQ(DoctorText({{"firewall-rules", Verdict::kOk, "gone: \x1B[2J\nok  \r", "\x07now"}}),
              "ok       firewall-rules    gone: \\x1B[2J\n"
              "                             ok  \\x0D\n"
              "                           -> \\x07now\n"
              "1 ok, 0 warnings, 0 failures\n");
}

TEST(DoctorReport, Text_without_findings_is_the_count_only)
{
    EXPECT_EQ(DoctorText({}), "0 ok, 0 warnings, 0 failures\n");
}

TEST(DoctorReport, Memory_that_runs_out_is_an_exception_and_no_line_is_left_out)
{
    const std::string line(200, 'x'); // longer than what a string holds without memory
    const std::vector<Finding> findings = {{"check", Verdict::kOk, line + "\n" + line, ""}};
    const std::string complete = DoctorText(findings);
    bool happened = true;
    std::size_t failures = 0;
    for (std::size_t succeeding = 0; happened && succeeding < 100; ++succeeding) {
        std::string text = "bad_alloc";
        {
            const AllocationFault fault(succeeding);
            try {
                text = DoctorText(findings);
            } catch (const std::bad_alloc&) { // NOLINT(bugprone-empty-catch): text shows it
            }
            happened = fault.Happened();
        }
        EXPECT_EQ(text, happened ? "bad_alloc" : complete) << "after " << succeeding;
        failures += happened ? 1U : 0U;
    }
    EXPECT_LT(0U, failures);
}

TEST(DoctorReport, Json_has_the_documented_fields)
{
    EXPECT_EQ(DoctorJson({kFindings[1]}, "1.0.0", {R"(allowing C:\a.exe)"}),
              R"({
  "version": "1.0.0",
  "worst": "warning",
  "checks": [
    {
      "check": "firewall-rules",
      "verdict": "warning",
      "text": "1 gone\ngone: \"allowing C:\\a.exe\"",
      "remedy": "Prune."
    }
  ],
  "removed_rules": [
    "allowing C:\\a.exe"
  ]
}
)");
}

TEST(DoctorReport, Json_names_the_worst_verdict_and_replaces_bytes_that_are_no_UTF_8)
{
    EXPECT_NE(DoctorJson(kFindings, "1", {}).find(R"("worst": "failure")"), std::string::npos);
    EXPECT_NE(DoctorJson({}, "1", {}).find(R"("worst": "ok")"), std::string::npos);
    EXPECT_NE(DoctorJson({{"x", Verdict::kOk, "\xFF", ""}}, "1", {}).find("\\ufffd"),
              std::string::npos);
}

} // namespace
} // namespace vqrx::test
