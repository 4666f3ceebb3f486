// The waits at their real lengths, once each.
#include "StopProcess.h"

#include "CapturingLogger.h"
#include "ChildProcess.h"
#include "LaunchProcess.h"

#include <gtest/gtest.h>

namespace vqrx::test {
namespace {

using system::daemon::daemon_mgr::v0::LaunchProcess;
using system::daemon::daemon_mgr::v0::ProcessInfo;
using system::daemon::daemon_mgr::v0::StopProcess;

ProcessInfo Start(const std::string& program, const ReadyEvent& ready, ProcessReaper& reaper)
{
    ProcessInfo record;
    record.executablePath = TestProgram(program);
    record.process = LaunchProcess(record.executablePath, {ready.Name()});
    record.processId = GetProcessId(record.process.Get());
    reaper.Note(record.processId);
    EXPECT_TRUE(ready.Wait());
    return record;
}

} // namespace

TEST(SlowStop, gives_a_program_30_seconds_to_quit_before_it_is_terminated)
{
    ProcessReaper reaper;
    const ReadyEvent ready;
    ProcessInfo record = Start("ignores_quit", ready, reaper);
    CapturingLogger logger;
    const ULONGLONG start = GetTickCount64();
    EXPECT_EQ(0, StopProcess(logger, record, {}));
    EXPECT_LE(29900U, GetTickCount64() - start); // ticks are coarse
    EXPECT_EQ(0U, logger.Lines().at(0).second.find("Stop (2) "));
}

TEST(SlowStop, gives_a_deaf_snmp_agent_32_rounds_of_one_second)
{
    ProcessReaper reaper;
    const ReadyEvent ready;
    ProcessInfo record = Start("kxsnmp_deaf", ready, reaper);
    CapturingLogger logger;
    const ULONGLONG start = GetTickCount64();
    EXPECT_EQ(0, StopProcess(logger, record, {}));
    EXPECT_LE(31900U, GetTickCount64() - start);
    EXPECT_EQ(0U, logger.Lines().at(0).second.find("Stop (1) "));
}

} // namespace vqrx::test
