// daemonctl ps --watch in a console of its own, and without one.
#include "CapturedProgram.h"
#include "ChildProcess.h"
#include "ConsoleProgram.h"
#include "Daemonctl.h"
#include "SupervisorProcess.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <string>

namespace vqrx::test {
namespace {

constexpr const char* kSilent =
    "\nthe supervisor has not answered for 5 s; see: daemonctl doctor\n";
constexpr const char* kTable = "ID  STATE";

std::string WatchCommand()
{
    return "\"" + ProductProgram("daemonctl.exe") + "\" ps --watch 1";
}

std::size_t CountOf(const std::string& part, const std::string& text)
{
    std::size_t count = 0;
    for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
        ++count;
    }
    return count;
}

/// A supervisor with one daemon.
class PsWatch : public testing::Test {
protected:
    PsWatch()
    {
        EXPECT_EQ(Daemonctl("launch \"" + TestProgram("no_windows") + "\"").exitCode, 0U);
        daemon_ = supervisor_.WaitForStart(0);
        EXPECT_NE(daemon_, 0U);
    }

    SupervisorProcess supervisor_;
    DWORD daemon_ = 0;
};

TEST_F(PsWatch, The_table_has_a_screen_of_its_own_until_Ctrl_C)
{
    const ConsoleProgram watch(WatchCommand());
    const JoinedConsole console(watch);
    std::string screen;
    const auto shows = [&](const std::string& part, std::size_t times = 1) {
        return WaitUntil([&] {
            screen = console.Screen();
            return CountOf(part, screen) >= times;
        });
    };
    EXPECT_TRUE(shows("Ctrl+C ends")) << screen;
    EXPECT_TRUE(shows("no_windows.exe\n")) << screen;
    EXPECT_TRUE(shows(" Start DaemonId(0) PId(")) << screen; // a record below the table
    EXPECT_EQ(Daemonctl("launch C:\\no\\such.exe").exitCode, 0U);
    EXPECT_TRUE(shows("such.exe\n")) << screen;
    EXPECT_TRUE(WaitUntil([&] { return console.ColoursOf("such.exe\n") == 0x0C; })) << "red";
    EXPECT_EQ(console.ColoursOf("no_windows.exe\n"), 0x07) << "grey";
    KillProcess(daemon_);
    EXPECT_TRUE(shows("Unknown (0x9)")) << screen;
    EXPECT_TRUE(shows(" Start DaemonId(0) PId(", 2)) << screen;
    console.PressCtrlC();
    EXPECT_TRUE(watch.Ends());
    EXPECT_EQ(watch.ExitCode(), 0U);
    EXPECT_EQ(CountOf("Ctrl+C ends", console.Screen()), 0U) << console.Screen();
}

TEST_F(PsWatch, Without_a_console_each_look_is_a_table)
{
    const CapturedProgram watch(WatchCommand());
    const auto prints = [&](const std::string& part) {
        return WaitUntil([&] { return CountOf(part, watch.Output()) >= 3; });
    };
    EXPECT_TRUE(prints(kTable)) << watch.Output();
    EXPECT_TRUE(prints(" 0  running ")) << watch.Output();
    EXPECT_TRUE(prints("no_windows.exe\n")) << watch.Output();
}

TEST_F(PsWatch, Without_a_console_a_table_has_colours_only_on_request)
{
    EXPECT_EQ(Daemonctl("launch C:\\no\\such.exe").exitCode, 0U);
    const CapturedProgram plain(WatchCommand());
    const CapturedProgram coloured(WatchCommand() + " --color always");
    for (const CapturedProgram* const watch : {&plain, &coloured}) {
        EXPECT_TRUE(WaitUntil([&] { return CountOf("cannot start", watch->Output()) >= 2; }))
            << watch->Output();
    }
    EXPECT_EQ(CountOf("\x1b[", plain.Output()), 0U) << plain.Output();
    EXPECT_GE(CountOf("\x1b[", coloured.Output()), 2U) << coloured.Output();
}

TEST_F(PsWatch, A_supervisor_that_hangs_is_told_and_holds_up_no_table)
{
    const CapturedProgram watch(WatchCommand());
    const auto prints = [&](const std::string& part, std::size_t times) {
        return WaitUntil([&] { return CountOf(part, watch.Output()) >= times; });
    };
    ASSERT_TRUE(prints(kTable, 2)) << watch.Output();
    ASSERT_TRUE(SuspendProcess(supervisor_.Process().Pid()));
    const std::size_t tables = CountOf(kTable, watch.Output());
    EXPECT_TRUE(prints(kSilent, 1)) << watch.Output();
    // One look may have been under way. No look waits until the supervisor counts as silent.
    const std::string output = watch.Output();
    EXPECT_GE(CountOf(kTable, output.substr(0, output.find(kSilent))), tables + 2) << output;
    const std::size_t threads = CountOfThreads(watch.Pid());
    EXPECT_TRUE(prints(std::string(kSilent) + kTable, 4)) << watch.Output();
    EXPECT_LE(CountOfThreads(watch.Pid()), threads);
    supervisor_.Process().Kill();
    EXPECT_TRUE(prints("\nno supervisor is running on this machine", 1)) << watch.Output();
}

} // namespace
} // namespace vqrx::test
