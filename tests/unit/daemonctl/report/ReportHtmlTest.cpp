#include "ReportHtml.h"

#include "TimelineBuilder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace vqrx::test {
namespace {

using client::v0::BuildTimeline;
using client::v0::MakeReportModel;
using client::v0::Record;
using client::v0::ReportHtml;
using client::v0::SupervisorState;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

std::string Page(const std::vector<std::string>& texts, const std::string& source = "a.log")
{
    std::vector<Record> records;
    for (const std::string& text : texts) {
        const auto number = static_cast<std::int64_t>(records.size());
        records.push_back(Record{number, 1763265156000 + number * 1000, 1, "", text});
    }
    return ReportHtml(MakeReportModel(BuildTimeline(records)), source, 60);
}

TEST(ReportHtml, loads_nothing_and_holds_no_script)
{
    const std::string page = Page({"Start DaemonId(0) PId(10) : a.exe "});
    EXPECT_THAT(page, StartsWith("<!DOCTYPE html>\n"));
    for (const char* const word : {"<script", "http:", "https:", "src=", "url(", "@import"}) {
        EXPECT_THAT(page, Not(HasSubstr(word)));
    }
    EXPECT_THAT(page, HasSubstr("prefers-color-scheme: dark"));
}

TEST(ReportHtml, that_is_written_again_and_again_reloads_itself_and_shows_its_age)
{
    const auto model =
        MakeReportModel(BuildTimeline({}), {SupervisorState::kRunning, 1763265156000});
    const std::string page = ReportHtml(model, "a.log", 60, 10);
    EXPECT_THAT(page,
                HasSubstr("<noscript><meta http-equiv=\"refresh\" content=\"10\"></noscript>"));
    EXPECT_THAT(page, HasSubstr("<time data-ms=\"1763265156000\" data-every=\"10\">"
                                "2025-11-16 04:52:36 UTC+01:00</time>"));
    EXPECT_THAT(page, HasSubstr("<script>"));
    EXPECT_THAT(page, HasSubstr("; script-src 'sha256-"));
    const std::string once = ReportHtml(model, "a.log", 60);
    EXPECT_THAT(once, HasSubstr("2025-11-16 04:52:36 UTC+01:00</time></p>"));
    for (const char* const word : {"<script", "refresh", "script-src"}) {
        EXPECT_THAT(once, Not(HasSubstr(word)));
    }
}

TEST(ReportHtml, has_a_range_of_the_last_hour_and_day_only_if_the_log_is_longer)
{
    const auto page = [](std::int64_t seconds) {
        const Record first{0, 1763265156000, 2, "", "Start DaemonId(0) PId(10) : a.exe "};
        const Record last{1, first.timeMs + seconds * 1000, 2, "", "x"};
        return ReportHtml(MakeReportModel(BuildTimeline({first, last})), "a.log", 0);
    };
    EXPECT_THAT(page(3600), Not(HasSubstr("id=\"hour\"")));
    EXPECT_THAT(page(3600), HasSubstr("<section class=\"range\" id=\"all\""));
    EXPECT_THAT(page(3601), HasSubstr("<section class=\"range\" id=\"hour\""));
    EXPECT_THAT(page(3601), HasSubstr("<a href=\"#hour\">last hour</a>"));
    EXPECT_THAT(page(3601), Not(HasSubstr("id=\"day\"")));
    EXPECT_THAT(page(86401), HasSubstr("<section class=\"range\" id=\"day\""));
}

TEST(ReportHtml, draws_ticks_and_gaps_once_for_all_daemons)
{
    const auto count = [](const std::string& page, const std::string& text) {
        std::size_t found = 0;
        for (std::size_t at = page.find(text); at != std::string::npos;
             at = page.find(text, at + 1)) {
            ++found;
        }
        return found;
    };
    const std::vector<std::string> oneDaemon = {
        "Deamon Thread started", "Start DaemonId(0) PId(10) : a.exe ",
        "Deamon Thread is exiting...", "Deamon Thread started"};
    std::vector<std::string> threeDaemons = oneDaemon;
    threeDaemons.insert(threeDaemons.begin() + 2, {"Start DaemonId(1) PId(11) : b.exe ",
                                                   "Start DaemonId(2) PId(12) : c.exe "});
    const std::string page = Page(threeDaemons);
    EXPECT_EQ(count(Page(oneDaemon), "class=\"tick\""), 4U); // each second
    EXPECT_EQ(count(page, "class=\"tick\""), 6U);
    EXPECT_EQ(count(page, ": no supervisor ran</title></rect>"), 1U);
    EXPECT_EQ(count(page, "<g id=\"back-all\">"), 1U);
    EXPECT_EQ(count(page, "<use href=\"#back-all\"/>"), 2U);
}

TEST(ReportHtml, shows_each_process_with_its_times_and_its_end)
{
    const std::string page =
        Page({"Start DaemonId(0) PId(10) : a.exe ", "Exception caught in : Access violation",
              "Start DaemonId(0) PId(11) : a.exe "});
    EXPECT_THAT(page, HasSubstr("process 10, from 2025-11-16 04:52:36 to 2025-11-16 04:52:37 "
                                "(1 s): ended: Access violation"));
    EXPECT_THAT(page, HasSubstr("process 11, from 2025-11-16 04:52:38 to 2025-11-16 04:52:38 "
                                "(0 ms): still running at the last record"));
    EXPECT_THAT(page, HasSubstr("<line class=\"end\" x1=\"50.000%\" x2=\"50.000%\""));
    EXPECT_THAT(page, HasSubstr("data-name=\"Availability\">0.00 %</td>"));
    EXPECT_THAT(page, Not(HasSubstr("does not show which daemon ended")));
    EXPECT_THAT(Page({"Unable to start a.exe ", "Exception caught in : Unknown (0x1)"}),
                HasSubstr("1 of them: the log does not show which daemon ended."));
}

TEST(ReportHtml, escapes_all_texts_of_the_log)
{
    const std::string page = Page(
        {"Start DaemonId(0) PId(10) : <script>alert(1)</script>\"' ", "Exception caught in : <b>",
         "Unable to start DaemonId(0) PId(10) : <i> ", "Unable to start <u>&amp; "},
        "<title>.log");
    for (const char* const word : {"<script", "<b>alert", "<i>", "<u>", "<title>.log"}) {
        EXPECT_THAT(page, Not(HasSubstr(word))) << word;
    }
    EXPECT_THAT(page, HasSubstr("&lt;script&gt;alert(1)&lt;/script&gt;&quot;&#39;"));
    EXPECT_THAT(page, HasSubstr("&lt;u&gt;&amp;amp;"));
}

TEST(ReportHtml, without_daemons_says_so)
{
    EXPECT_THAT(Page({}), HasSubstr("The log contains no record about a daemon."));
    EXPECT_THAT(Page({"Exit"}), HasSubstr("The log contains no record about a daemon."));
    EXPECT_THAT(ReportHtml(MakeReportModel({}, {SupervisorState::kUnknown, 1, "no log"}), "", 0, 5),
                AllOf(HasSubstr("no log"), Not(HasSubstr("Records")), Not(HasSubstr("no record"))));
}

} // namespace
} // namespace vqrx::test
