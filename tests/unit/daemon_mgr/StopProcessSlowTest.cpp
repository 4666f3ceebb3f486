// Each wait of a stop once with its real length.
#include "StopProcess.h"

#include "CapturingLogger.h"
#include "ChildProcess.h"
#include "LaunchProcess.h"
#include "WaitNotes.h"

#include <gtest/gtest.h>

#include <vector>

namespace vqrx::test {
namespace {

using system::daemon::daemon_mgr::v0::LaunchProcess;
using system::daemon::daemon_mgr::v0::ProcessInfo;
using system::daemon::daemon_mgr::v0::StopProcess;

ProcessInfo Start(const std::string& program, const ReadyEvent& ready, ProcessReaper& reaper)
{
    ProcessInfo daemon;
    daemon.executablePath = TestProgram(program);
    daemon.process = LaunchProcess(daemon.executablePath, {ready.Name()});
    daemon.processId = GetProcessId(daemon.process.Get());
    reaper.Note(daemon.processId);
    EXPECT_TRUE(ready.Wait());
    return daemon;
}

} // namespace

TEST(StopProcessSlowTest, Program_that_ignores_WM_QUIT_is_terminated_after_30_seconds)
{
    ProcessReaper reaper;
    const ReadyEvent ready;
    ProcessInfo daemon = Start("ignores_quit", ready, reaper);
    CapturingLogger logger;
    const WaitNotes notes;
    const ULONGLONG start = GetTickCount64();
    EXPECT_EQ(0, StopProcess(logger, daemon, {}));
    EXPECT_LE(29900U, GetTickCount64() - start); // the tick count is up to 16 ms behind
    EXPECT_TRUE(notes.Sleeps().empty());
    EXPECT_EQ((std::vector<DWORD>{30000}), notes.Waits());
    EXPECT_EQ(0U, logger.Lines().at(0).second.find("Stop (2) "));
}

TEST(StopProcessSlowTest, Agent_that_ignores_the_keystrokes_gets_32_rounds_of_one_second)
{
    ProcessReaper reaper;
    const ReadyEvent ready;
    ProcessInfo daemon = Start("kxsnmp_deaf", ready, reaper);
    CapturingLogger logger;
    const WaitNotes notes;
    const ULONGLONG start = GetTickCount64();
    EXPECT_EQ(0, StopProcess(logger, daemon, {}));
    EXPECT_LE(31900U, GetTickCount64() - start);
    EXPECT_EQ(std::vector<DWORD>(32, 1000), notes.Sleeps());
    EXPECT_EQ((std::vector<DWORD>{30000}), notes.Waits()); // ended by WM_QUIT
    EXPECT_EQ(0U, logger.Lines().at(0).second.find("Stop (1) "));
}

} // namespace vqrx::test
