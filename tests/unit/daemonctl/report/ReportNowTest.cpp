#include "ReportNow.h"

#include "TimelineBuilder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace vqrx::test {
namespace {

using client::v0::BuildTimeline;
using client::v0::DaemonStatus;
using client::v0::MakeReportModel;
using client::v0::NowHtml;
using client::v0::Record;
using client::v0::ReportMoment;
using client::v0::RunState;
using client::v0::SupervisorState;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

constexpr std::int64_t kBegin = 1763265156000; // 2025-11-16 03:52:36 UTC

/// Writes the part about the present for a log with one record a second, one second after the last.
std::string NowOf(const std::vector<std::string>& texts,
                  SupervisorState state = SupervisorState::kRunning)
{
    std::vector<Record> records;
    for (const std::string& text : texts) {
        const auto number = static_cast<std::int64_t>(records.size());
        const auto isText = [&text](const Record& record) { return record.text == text; };
        const int level = std::none_of(records.begin(), records.end(), isText) ? 2 : 1; // a restart
        records.push_back(Record{number, kBegin + number * 1000, level, "", text});
    }
    const auto nowMs = kBegin + static_cast<std::int64_t>(records.size()) * 1000;
    return NowHtml(MakeReportModel(BuildTimeline(records), {state, nowMs}), 0);
}

std::vector<std::string> CrashLoop(const std::string& command, int restarts)
{
    const std::string start = "Start DaemonId(0) PId(10) : " + command;
    std::vector<std::string> texts = {start};
    for (int restart = 0; restart < restarts; ++restart) {
        texts.insert(texts.end(), {"Exception caught in : Access violation", start});
    }
    return texts;
}

TEST(ReportNow, names_a_crash_loop_in_words)
{
    const std::string html = NowOf(CrashLoop("C:\\My App\\video.exe -o C:\\x ", 41));
    EXPECT_THAT(html,
                HasSubstr("video.exe was restarted 41 times in the last 10 minutes, last reason "
                          "Access violation."));
    EXPECT_THAT(html, HasSubstr("\xE2\x9A\xA0 restarting"));
    EXPECT_THAT(NowOf(CrashLoop("a.exe ", 4)), Not(HasSubstr("was restarted")));
}

TEST(ReportNow, names_a_program_that_cannot_be_started)
{
    EXPECT_THAT(NowOf({"Unable to start C:\\no.exe "}), HasSubstr("no.exe cannot be started."));
}

TEST(ReportNow, names_why_a_program_cannot_be_started_if_somebody_looked)
{
    const std::vector<Record> records = {{0, kBegin, 1, "", "Unable to start C:\\no.exe "}};
    ReportMoment moment{SupervisorState::kRunning, kBegin + 1000};
    DaemonStatus daemon;
    daemon.state = RunState::kCannotStart;
    daemon.command = "C:\\no.exe ";
    daemon.obstacles = {"C:\\no.exe does not exist", "<b>"};
    moment.daemons = {daemon};
    EXPECT_THAT(NowHtml(MakeReportModel(BuildTimeline(records), moment), 0),
                HasSubstr("no.exe cannot be started: C:\\no.exe does not exist; &lt;b&gt;."));
}

TEST(ReportNow, warns_if_the_supervisor_does_not_run)
{
    const std::string html =
        NowOf({"Start DaemonId(0) PId(10) : a.exe "}, SupervisorState::kNotRunning);
    EXPECT_THAT(html, HasSubstr("The supervisor is not running."));
    EXPECT_THAT(html, Not(HasSubstr("<table")));
    EXPECT_THAT(NowOf({}), IsEmpty());
}

TEST(ReportNow, warns_if_the_supervisor_does_not_answer)
{
    const std::string html =
        NowOf({"Start DaemonId(0) PId(10) : a.exe "}, SupervisorState::kNotAnswering);
    EXPECT_THAT(html,
                HasSubstr("<p class=\"alarm\" role=\"alert\">The supervisor does not answer. "));
    EXPECT_THAT(html, HasSubstr("<h2>At the last record</h2>"));
    EXPECT_THAT(html, HasSubstr("a.exe"));
}

TEST(ReportNow, warns_if_the_log_cannot_be_read_and_escapes_the_reason)
{
    const std::string html =
        NowHtml(MakeReportModel({}, {SupervisorState::kNotRunning, kBegin, "<a.log> is gone"}), 0);
    EXPECT_THAT(html, HasSubstr("The supervisor is not running."));
    EXPECT_THAT(html, HasSubstr("<p class=\"alarm\" role=\"alert\">The log cannot be read"));
    EXPECT_THAT(html, HasSubstr("&lt;a.log&gt; is gone"));
    EXPECT_THAT(html, Not(HasSubstr("up to its last record")));
}

TEST(ReportNow, names_the_damage_of_the_log_on_top)
{
    ReportMoment moment{SupervisorState::kRunning, kBegin};
    moment.logDamage = "2 lines could not be read";
    EXPECT_THAT(NowHtml(MakeReportModel({}, moment), 0),
                StartsWith("<p class=\"alarm\" role=\"alert\">The log is damaged, so the page may "
                           "lack something: <span class=\"command\">2 lines could not be "
                           "read</span></p>\n"));
}

TEST(ReportNow, lists_the_watched_daemons_with_those_in_trouble_first)
{
    std::vector<std::string> texts = {"Start DaemonId(3) PId(9) : good.exe ",
                                      "Start DaemonId(4) PId(8) : gone.exe ",
                                      "Stop (1) DaemonId(4) PId(8) : gone.exe "};
    const auto loop = CrashLoop("bad.exe ", 6);
    texts.insert(texts.end(), loop.begin(), loop.end());
    const std::string html = NowOf(texts);
    EXPECT_THAT(html, HasSubstr("<h2>Now</h2>"));
    EXPECT_THAT(html, HasSubstr("data-name=\"Since\">"
                                "<span class=\"time\">2025-11-16 03:52:36</span></td>"));
    EXPECT_THAT(html, Not(HasSubstr("gone.exe")));
    EXPECT_LT(html.find("command\">bad.exe"), html.find("command\">good.exe"));
    EXPECT_THAT(html, HasSubstr("data-name=\"Restarts in the last hour\">6</td>"));
    EXPECT_THAT(NowOf({"Start DaemonId(0) PId(10) : a.exe "}, SupervisorState::kUnknown),
                HasSubstr("<h2>At the last record</h2>"));
}

} // namespace
} // namespace vqrx::test
