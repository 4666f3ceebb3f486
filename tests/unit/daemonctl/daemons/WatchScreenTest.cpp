#include "WatchScreen.h"

#include "SomeDaemons.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace vqrx::test {
namespace {

using namespace client::v0;

AttributedRecord RecordAt(std::int64_t timeMs, const std::string& text, int level = 1)
{
    return {Record{1, timeMs, level, "date", text}, EventOf(text), Attribution::kStated};
}

WatchLook SomeLook()
{
    WatchLook look;
    look.nowMs = 1'100'000;
    look.daemons = SomeDaemons();
    look.records = {RecordAt(1, "one"), RecordAt(2, "two", 0), RecordAt(3, "three")};
    return look;
}

std::vector<ScreenLine> Screen(const WatchLook* before, const WatchLook& now, ScreenSize size)
{
    return ComposeScreen(before, now, size, 2,
                         [](std::int64_t timeMs) { return "t" + std::to_string(timeMs); });
}

TEST(WatchScreen, Has_the_table_and_below_it_the_newest_records_that_fit)
{
    const auto lines = Screen(nullptr, SomeLook(), {200, 8});
    ASSERT_EQ(lines.size(), 8U);
    EXPECT_EQ(lines[0].text, "t1100000   every 2 s   Ctrl+C ends");
    EXPECT_EQ(lines[1].text.find("ID  STATE"), 0U);
    EXPECT_EQ(lines[3].level, 0); // cannot start
    EXPECT_EQ(lines[5].text, "");
    EXPECT_EQ(lines[6].text, "date two");
    EXPECT_EQ(lines[6].level, 0);
    EXPECT_EQ(lines[7].text, "date three");
    EXPECT_EQ(Screen(nullptr, SomeLook(), {200, 25}).size(), 9U);
}

TEST(WatchScreen, Has_no_line_that_is_wider_or_more_lines_than_the_window)
{
    for (const std::size_t width : {1U, 20U, 80U}) {
        for (const std::size_t height : {1U, 2U, 4U, 6U, 7U}) {
            const auto lines = Screen(nullptr, SomeLook(), {width, height});
            EXPECT_LE(lines.size(), height);
            for (const ScreenLine& line : lines) {
                EXPECT_LE(CharactersOf(line.text), std::max<std::size_t>(width, 20)) << line.text;
            }
        }
    }
}

TEST(WatchScreen, Says_how_many_daemons_without_room_are_in_trouble)
{
    const ScreenLine last = Screen(nullptr, SomeLook(), {80, 4}).back();
    EXPECT_EQ(last.text, "... and 2 more, 1 of them in trouble");
    EXPECT_EQ(last.level, 0);
    WatchLook well = SomeLook();
    for (DaemonStatus& daemon : well.daemons) {
        daemon.state = RunState::kRunning;
    }
    const ScreenLine calm = Screen(nullptr, well, {80, 4}).back();
    EXPECT_EQ(calm.text, "... and 2 more");
    EXPECT_EQ(calm.level, -1);
}

TEST(WatchScreen, Marks_the_daemons_and_records_that_have_changed)
{
    const WatchLook before = SomeLook();
    WatchLook now = SomeLook();
    for (const ScreenLine& line : Screen(&before, now, {200, 25})) {
        EXPECT_FALSE(line.marked) << line.text;
    }
    now.daemons[0].restarts += 1;
    now.records.push_back(RecordAt(4, "four"));
    const auto lines = Screen(&before, now, {200, 25});
    EXPECT_TRUE(lines[2].marked);
    EXPECT_FALSE(lines[3].marked);
    EXPECT_TRUE(lines.back().marked);
    EXPECT_FALSE(lines[lines.size() - 2].marked);
}

TEST(WatchScreen, Marks_the_first_records_of_a_log_that_had_none_before)
{
    WatchLook before = SomeLook();
    before.records.clear();
    for (const bool isFirst : {true, false}) {
        const auto lines = Screen(isFirst ? nullptr : &before, SomeLook(), {200, 25});
        EXPECT_EQ(lines.back().marked, !isFirst);
    }
}

TEST(WatchScreen, Finds_the_daemon_of_the_look_before_in_any_order)
{
    const WatchLook before = SomeLook();
    WatchLook now = SomeLook();
    std::reverse(now.daemons.begin(), now.daemons.end());
    for (const ScreenLine& line : Screen(&before, now, {200, 25})) {
        EXPECT_FALSE(line.marked) << line.text;
    }
    now.daemons.push_back(now.daemons[0]);
    now.daemons.back().command = "new.exe ";
    const auto lines = Screen(&before, now, {200, 25});
    EXPECT_TRUE(lines[1 + now.daemons.size()].marked) << lines[1 + now.daemons.size()].text;
}

TEST(WatchScreen, Without_a_supervisor_says_so_and_goes_on_showing_the_records)
{
    WatchLook now = SomeLook();
    now.problem = "no supervisor is running on this machine";
    const auto lines = Screen(nullptr, now, {200, 25});
    EXPECT_EQ(lines[1].text, "no supervisor is running on this machine");
    EXPECT_EQ(lines[1].level, 0);
    EXPECT_EQ(lines[3].text, "date one");
}

TEST(WatchScreen, Has_a_note_about_the_supervisor_above_the_table)
{
    WatchLook now = SomeLook();
    now.note = "the supervisor has not answered for 5 s";
    const auto lines = Screen(nullptr, now, {30, 25});
    EXPECT_EQ(lines[1].text, "the supervisor has not answer\xE2\x80\xA6");
    EXPECT_EQ(lines[1].level, 0);
    EXPECT_EQ(lines[2].text.find("ID  STATE"), 0U);
    EXPECT_EQ(Screen(nullptr, now, {80, 4}).back().text, "... and 3 more, 1 of them in trouble");
}

TEST(WatchScreen, Records_about_daemons_and_about_the_supervisors_life_are_worth_watching)
{
    for (const char* text : {"Start DaemonId(0) PId(1) : a.exe ", "Deamon Thread started",
                             "Exception caught in : Access violation", "Overflowed message queue.",
                             "Log file a.log is written again. Messages missing in it: 3"}) {
        EXPECT_TRUE(IsWorthWatching(RecordAt(1, text))) << text;
    }
    EXPECT_FALSE(IsWorthWatching(RecordAt(1, "Connected to WMI resource")));
    EXPECT_FALSE(IsWorthWatching(RecordAt(1, "something else")));
}

} // namespace
} // namespace vqrx::test
