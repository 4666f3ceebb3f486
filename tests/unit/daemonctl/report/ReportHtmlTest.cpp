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
}

} // namespace
} // namespace vqrx::test
