#include "StatusTable.h"

#include "SomeDaemons.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace vqrx::test {
namespace {

using namespace client::v0;

TableStyle Style(std::int64_t nowMs)
{
    TableStyle style;
    style.nowMs = nowMs;
    style.timeText = [](std::int64_t timeMs) { return "t" + std::to_string(timeMs); };
    return style;
}

std::string TableText(const std::vector<DaemonStatus>& daemons, const TableStyle& style)
{
    std::string text;
    for (const TableLine& line : TableOf(daemons, style)) {
        text += line.text + "\n";
    }
    return text;
}

TEST(StatusTable, Has_a_line_of_titles_and_a_line_for_each_daemon)
{
    EXPECT_EQ(
        TableText(SomeDaemons(), Style(1'100'000)),
        "ID  STATE          PID  UP SINCE      RESTARTS  LAST EXIT               CPU   MEMORY  COMMAND\n"
        " 0  running       1234  t1000000             2  exit code 3, t999000  0.5 %  1.5 MiB  "
        "C:\\FW\\App\\a.exe \xC3\xBC\n"
        " -  cannot start     -  -         0 (7 failed)  ? (likely), t998000       -        -  no.exe\n"
        " -  running       1234  t1000000             ?  ?                     0.5 %  1.5 MiB  "
        "C:\\FW\\App\\a.exe \xC3\xBC\n");
    EXPECT_EQ(TableText({}, Style(0)),
              "ID  STATE  PID  UP SINCE  RESTARTS  LAST EXIT  CPU  MEMORY  COMMAND\n");
}

TEST(StatusTable, A_daemon_that_has_not_ended_yet_has_no_last_exit)
{
    DaemonStatus daemon;
    daemon.id = 1;
    daemon.state = RunState::kCannotStart;
    daemon.command = "a.exe ";
    EXPECT_EQ(TableText({daemon}, Style(0)),
              "ID  STATE         PID  UP SINCE      RESTARTS  LAST EXIT  CPU  MEMORY  COMMAND\n"
              " 1  cannot start    -  -         0 (0 failed)  -            -       -  a.exe\n");
}

TEST(StatusTable, A_daemon_in_a_crash_loop_shows_its_restarts_of_the_last_hour)
{
    auto daemons = SomeDaemons();
    daemons.resize(2);
    for (DaemonStatus& daemon : daemons) {
        daemon.state = RunState::kRestarting;
        daemon.recent.lastHour = 41;
        daemon.recent.lastTenMinutes = 7;
        daemon.restarts += 50;
    }
    daemons[1].restarts = 57;
    daemons[1].restartsComplete = false;
    TableStyle style = Style(1'100'000);
    const std::string wide = TableText(daemons, style);
    EXPECT_NE(wide.find("   52 (41 in 1 h)  exit code 3, t999000  "), std::string::npos) << wide;
    EXPECT_NE(wide.find("  57+ (41 in 1 h)  ? (likely), t998000  "), std::string::npos) << wide;
    style.width = 90;
    const std::string narrow = TableText(daemons, style);
    EXPECT_NE(narrow.find("   52 (41 in 1 h)  0.5 %  "), std::string::npos) << narrow;
    daemons[0].state = RunState::kRunning; // the loop has ended
    EXPECT_NE(TableText(daemons, style).find("               52  0.5 %  "), std::string::npos);
}

TEST(StatusTable, Control_characters_are_visible)
{
    DaemonStatus daemon;
    daemon.id = 1;
    daemon.state = RunState::kEnded;
    daemon.lastExit = LastExit{1, "\x1B[2J", true};
    daemon.command = "a.exe \n 2  running \x1B]0;x\x07\xC2\x9B ";
    EXPECT_EQ(TableText({daemon}, Style(0)),
              "ID  STATE  PID  UP SINCE  RESTARTS  LAST EXIT    CPU  MEMORY  COMMAND\n"
              " 1  ended    -  -                0  \\x1B[2J, t1    -       -  "
              "a.exe \\x0A 2  running \\x1B]0;x\\x07\\x9B\n");
}

TEST(StatusTable, On_a_narrow_terminal_is_one_line_a_daemon)
{
    TableStyle style = Style(0);
    style.width = 60;
    style.timeText = [](std::int64_t timeMs) {
        return timeMs == 0 ? "2026-11-21 08:00:00"
                           : "2026-11-" + std::to_string(timeMs / 100'000 + 11) + " 07:59:58";
    };
    const auto lines = TableOf(SomeDaemons(), style);
    ASSERT_EQ(lines.size(), 4U);
    EXPECT_EQ(lines[0].text,
              "ID  STATE          PID  UP SINCE      RESTARTS    CPU   MEM\xE2\x80\xA6");
    EXPECT_EQ(lines[1].text,
              " 0  running       1234  07:59:58             2  0.0 %  1.5 \xE2\x80\xA6");
    for (const TableLine& line : lines) {
        EXPECT_LE(CharactersOf(line.text), 60U);
    }
    style.width = 80;
    EXPECT_EQ(TableOf(SomeDaemons(), style)[1].text,
              " 0  running       1234  07:59:58             2  0.0 %  1.5 MiB  a.exe \xC3\xBC");
}

TEST(StatusTable, Lines_of_daemons_in_trouble_have_a_colour)
{
    auto daemons = SomeDaemons();
    daemons[2].state = RunState::kEnded;
    const auto lines = TableOf(daemons, Style(0));
    EXPECT_EQ(lines[0].level, -1);
    EXPECT_EQ(lines[1].level, -1); // running
    EXPECT_EQ(lines[2].level, 0);  // cannot start
    EXPECT_EQ(lines[3].level, 1);  // ended
    daemons[0].state = RunState::kRestarting;
    EXPECT_EQ(TableOf(daemons, Style(0))[1].level, 0);
}

TEST(StatusTable, After_an_earlier_look_shows_processor_time_and_memory_since_then)
{
    auto before = SomeDaemons();
    before.resize(1);
    auto now = before;
    now[0].process.cpuMs += 1000;
    now[0].process.memoryBytes += 1024 * 1024;
    TableStyle style = Style(1'102'000);
    style.before = &before;
    style.beforeMs = 1'100'000;
    EXPECT_NE(TableText(now, style).find("  50.0 %  2.5 MiB +1.0  "), std::string::npos)
        << TableText(now, style);
    now[0].process.memoryBytes -= 2 * 1024 * 1024;
    now[0].process.memoryBytes += 1024 * 1024 / 2;
    EXPECT_NE(TableText(now, style).find("  1.0 MiB -0.5  "), std::string::npos);
    now[0].process.createdMs += 1; // another process
    EXPECT_EQ(TableText(now, style).find("50.0 %"), std::string::npos);
}

TEST(CpuPercent, of_a_process_that_was_just_created_is_that_of_a_whole_second)
{
    EXPECT_DOUBLE_EQ(CpuPercent(0, 120, 10), 12.0); // not 1200
    EXPECT_DOUBLE_EQ(CpuPercent(0, 15, 0), 1.5);
    EXPECT_DOUBLE_EQ(CpuPercent(500, 1500, 2000), 50.0);
}

TEST(CutTo, keeps_whole_characters_and_marks_what_is_missing)
{
    EXPECT_EQ(CutTo("abc", 3), "abc");
    EXPECT_EQ(CutTo("abcd", 3), "ab\xE2\x80\xA6");
    EXPECT_EQ(CutTo("\xC3\xBC\xC3\xBC\xC3\xBC", 2), "\xC3\xBC\xE2\x80\xA6");
    EXPECT_EQ(CutTo("abc", 0), "");
}

} // namespace
} // namespace vqrx::test
