#include "log_perf/sink/ConsoleSink.h"

#include "ChildProcess.h"
#include "ImportPatch.h"
#include "LockDepth.h"
#include "win32/UniqueHandle.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <ctime>
#include <iostream>
#include <optional>
#include <sstream>
#include <string>

namespace vqrx::test {
namespace {

using log::log_perf::v2::ConsoleSink;
using log::log_perf::v2::Timestamp;

// Everything that happened on the console, in order: "<12>" stands for setting colour 12.
std::ostringstream* screen = nullptr;
HANDLE coloured = nullptr;
int mostLocks = 0; // that were held while the console was used

void NoteLocks()
{
    mostLocks = std::max(mostLocks, LockDepth::Here());
}

BOOL WINAPI NoteColour(HANDLE console, WORD attribute)
{
    NoteLocks();
    coloured = console;
    *screen << '<' << attribute << '>';
    return TRUE;
}

/// Passes flushed text to the screen; counts the flushes that were not empty.
class FlushedText : public std::stringbuf {
public:
    int writes = 0;

protected:
    int sync() override
    {
        NoteLocks();
        writes += str().empty() ? 0 : 1;
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
        mostLocks = 0;
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
    LockDepth locks_;
    ImportPatch patch_{"SetConsoleTextAttribute", &NoteColour};
    std::optional<ConsoleSink> sink_;
};

TEST_F(Console, Threshold_3_shows_all_four_levels_in_their_colours)
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

TEST_F(Console, Threshold_1_shows_no_line_and_sets_no_colour_for_levels_2_and_3)
{
    sink_->SetThreshold(1);
    Write(2, "information");
    Write(3, "detail");
    EXPECT_EQ(Screen(), "");
    Write(1, "warning");
    EXPECT_EQ(Screen(), "<14>Mon Nov 16 12:00:00.007 warning\n");
}

TEST_F(Console, Milliseconds_have_three_digits)
{
    Write(2, "a", 0);
    Write(2, "b", 45);
    Write(2, "c", 999);
    EXPECT_EQ(Screen(), "<7>Mon Nov 16 12:00:00.000 a\n"
                        "<7>Mon Nov 16 12:00:00.045 b\n"
                        "<7>Mon Nov 16 12:00:00.999 c\n");
}

TEST_F(Console, The_colour_stays_after_a_line_and_the_destructor_sets_grey)
{
    Write(0, "error");
    EXPECT_TRUE(Screen().ends_with(" error\n"));
    sink_.reset();
    EXPECT_TRUE(Screen().ends_with(" error\n<7>"));
}

TEST_F(Console, The_destructor_sets_grey_even_if_nothing_was_written)
{
    sink_.reset();
    EXPECT_EQ(Screen(), "<7>");
}

TEST_F(Console, The_colour_is_set_on_the_standard_output)
{
    Write(2, "a");
    EXPECT_EQ(coloured, GetStdHandle(STD_OUTPUT_HANDLE));
}

TEST_F(Console, Each_line_is_flushed_at_once_and_in_one_write)
{
    Write(2, "a");
    EXPECT_EQ(buffer_.writes, 1);
    Write(0, "b");
    EXPECT_EQ(buffer_.writes, 2);
}

TEST_F(Console, No_lock_is_held_while_the_console_is_used)
{
    Write(2, "a");
    EXPECT_EQ(mostLocks, 0);
}

TEST_F(Console, Levels_below_0_and_above_3_are_grey)
{
    sink_->SetThreshold(100);
    Write(-1, "below");
    Write(4, "above");
    EXPECT_EQ(Screen(), "<7>Mon Nov 16 12:00:00.007 below\n"
                        "<7>Mon Nov 16 12:00:00.007 above\n");
}

TEST_F(Console, Long_texts_and_percent_signs_are_written_unchanged)
{
    const std::string text = std::string(1030, 'x') + " %s %n";
    Write(2, text);
    EXPECT_EQ(Screen(), "<7>Mon Nov 16 12:00:00.007 " + text + "\n");
}

TEST_F(Console, A_line_is_written_even_if_the_stream_failed_before)
{
    std::cerr.setstate(std::ios::badbit);
    Write(2, "next");
    EXPECT_EQ(Screen(), "<7>Mon Nov 16 12:00:00.007 next\n");
}

// The program reads the screen buffer of its own console and ends with 0 if text and colours match.
TEST(RealConsole, The_console_shows_the_four_levels_in_their_colours_and_is_grey_at_the_end)
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
