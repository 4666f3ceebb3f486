#include "log_perf/sink/ConsoleSink.h"

#include "ChildProcess.h"
#include "ImportPatch.h"
#include "win32/UniqueHandle.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <ctime>
#include <iostream>
#include <optional>
#include <sstream>
#include <string>

namespace vqrx::test {
namespace {

using log::log_perf::v2::ConsoleSink;
using log::log_perf::v2::Timestamp;

// What happened on the console, in its order: "<12>" for a colour, and the text.
std::ostringstream* screen = nullptr;
HANDLE coloured = nullptr;

BOOL WINAPI NoteColour(HANDLE console, WORD attribute)
{
    coloured = console;
    *screen << '<' << attribute << '>';
    return TRUE;
}

/// Shows on the screen what has been flushed, and no more; counts the flushes that had something.
class FlushedText : public std::stringbuf {
public:
    int pieces = 0;

protected:
    int sync() override
    {
        pieces += str().empty() ? 0 : 1;
        *screen << str();
        str("");
        return 0;
    }
};

class Console : public testing::Test {
protected:
    Console()
        : before_(std::cerr.rdbuf(&buffer_))
    {
        screen = &screen_;
        sink_.emplace();
        sink_->SetThreshold(3);
    }
    ~Console() override { std::cerr.rdbuf(before_); }

    void Write(int level, const std::string& text, unsigned short milliseconds = 7)
    {
        const Timestamp timestamp = Noon(milliseconds);
        sink_->Write(level, &timestamp, text.c_str());
    }

    // 12:00:00 local time, on Monday, the 16th of November 2026.
    static Timestamp Noon(unsigned short milliseconds)
    {
        std::tm noon{};
        noon.tm_year = 126;
        noon.tm_mon = 10;
        noon.tm_mday = 16;
        noon.tm_hour = 12;
        noon.tm_isdst = -1;
        Timestamp timestamp{};
        timestamp.time = _mktime64(&noon);
        timestamp.millitm = milliseconds;
        return timestamp;
    }

    std::string Screen() const { return screen_.str(); }

    std::ostringstream screen_;
    FlushedText buffer_;
    std::streambuf* before_;
    ImportPatch patch_{"SetConsoleTextAttribute", &NoteColour};
    std::optional<ConsoleSink> sink_;
};

TEST_F(Console, shows_all_four_levels_in_their_colours_with_the_threshold_3)
{
    Write(0, "error");
    Write(1, "warning");
    Write(2, "information");
    Write(3, "detail");
    EXPECT_EQ(Screen(), "<12>Mon Nov 16 12:00:00.007 error\n"
                        "<14>Mon Nov 16 12:00:00.007 warning\n"
                        "<7>Mon Nov 16 12:00:00.007 information\n"
                        "<10>Mon Nov 16 12:00:00.007 detail\n");
}

TEST_F(Console, with_the_threshold_1_neither_shows_levels_2_and_3_nor_changes_the_colour_for_them)
{
    sink_->SetThreshold(1);
    Write(2, "information");
    Write(3, "detail");
    EXPECT_EQ(Screen(), "");
    Write(1, "warning");
    EXPECT_EQ(Screen(), "<14>Mon Nov 16 12:00:00.007 warning\n");
}

TEST_F(Console, shows_milliseconds_with_three_digits)
{
    Write(2, "a", 0);
    Write(2, "b", 45);
    Write(2, "c", 999);
    EXPECT_EQ(Screen(), "<7>Mon Nov 16 12:00:00.000 a\n"
                        "<7>Mon Nov 16 12:00:00.045 b\n"
                        "<7>Mon Nov 16 12:00:00.999 c\n");
}

TEST_F(Console, leaves_the_colour_of_a_line_until_the_next_and_is_grey_again_at_its_end)
{
    Write(0, "error");
    EXPECT_TRUE(Screen().ends_with(" error\n"));
    sink_.reset();
    EXPECT_TRUE(Screen().ends_with(" error\n<7>"));
}

TEST_F(Console, is_grey_at_its_end_also_when_nothing_was_written)
{
    sink_.reset();
    EXPECT_EQ(Screen(), "<7>");
}

TEST_F(Console, sets_the_colour_on_the_standard_output)
{
    Write(2, "a");
    EXPECT_EQ(coloured, GetStdHandle(STD_OUTPUT_HANDLE));
}

TEST_F(Console, has_each_line_out_at_once_and_in_one_piece)
{
    Write(2, "a");
    EXPECT_EQ(buffer_.pieces, 1);
    Write(0, "b");
    EXPECT_EQ(buffer_.pieces, 2);
}

TEST_F(Console, shows_levels_without_a_colour_of_their_own_in_grey)
{
    sink_->SetThreshold(100);
    Write(-1, "below");
    Write(4, "above");
    EXPECT_EQ(Screen(), "<7>Mon Nov 16 12:00:00.007 below\n"
                        "<7>Mon Nov 16 12:00:00.007 above\n");
}

TEST_F(Console, writes_texts_of_any_length_and_percent_signs_as_they_are)
{
    const std::string text = std::string(1030, 'x') + " %s %n";
    Write(2, text);
    EXPECT_EQ(Screen(), "<7>Mon Nov 16 12:00:00.007 " + text + "\n");
}

TEST_F(Console, shows_later_lines_although_one_could_not_be_written)
{
    std::cerr.setstate(std::ios::badbit);
    Write(2, "next");
    EXPECT_EQ(Screen(), "<7>Mon Nov 16 12:00:00.007 next\n");
}

// The program looks at the screen of the console it is given, as an operator does.
TEST(RealConsole, shows_the_four_levels_in_their_colours_and_is_grey_again_at_the_end)
{
    std::string commandLine = "\"" + TestProgram("shows_levels") + "\"";
    STARTUPINFOA startup{};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION started{};
    ASSERT_TRUE(CreateProcessA(nullptr, commandLine.data(), nullptr, nullptr, FALSE,
                               CREATE_NEW_CONSOLE, nullptr, nullptr, &startup, &started));
    const system::win32::v1::UniqueKernelHandle thread(started.hThread);
    const system::win32::v1::UniqueKernelHandle process(started.hProcess);
    ASSERT_EQ(WAIT_OBJECT_0, WaitForSingleObject(process.Get(), 60000));
    DWORD exitCode = 99;
    GetExitCodeProcess(process.Get(), &exitCode);
    EXPECT_EQ(0U, exitCode);
}

} // namespace
} // namespace vqrx::test
