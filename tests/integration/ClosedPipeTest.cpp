// daemonctl whose reader has gone, as in "daemonctl log | head".
#include "CapturedProgram.h"
#include "ChildProcess.h"
#include "FileContent.h"
#include "FirmwareRegistry.h"
#include "ProgramInJob.h"
#include "TempFolder.h"
#include "win32/UniqueHandle.h"

#include <windows.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

namespace vqrx::test {
namespace {

constexpr DWORD kClientEndsMs = 60000;

// A machine with a firmware root, no supervisor, and a log of more lines than a pipe holds.
class ClosedPipe : public testing::Test {
protected:
    ClosedPipe()
    {
        std::filesystem::create_directory(root_.Path() / "App");
        std::filesystem::create_directory(root_.Path() / "Logs");
        registry_.SetPathname(FirmwareRegistry::kCurrent, root_.Path().string() + "\\App");
        std::ofstream log(root_.Path() / "Logs" / "DaemonManager.log", std::ios::binary);
        log << "0x00000000\r\n";
        for (int number = 0; number < 10000; ++number) {
            log << number << ";Sat Nov 21 04:52:16.000;1795236736000;2;Deamon Thread started\r\n";
        }
    }

    // Runs daemonctl with a pipe for its output that nobody reads.
    // @return its exit code, and what it writes to standard error
    std::string Run(const std::string& arguments)
    {
        system::win32::v1::UniqueKernelHandle readEnd;
        system::win32::v1::UniqueKernelHandle writeEnd;
        SECURITY_ATTRIBUTES inheritable{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
        EXPECT_NE(CreatePipe(readEnd.Put(), writeEnd.Put(), &inheritable, 0), FALSE);
        readEnd.Reset();
        ProgramStart start;
        start.commandLine = '"' + ProductProgram("daemonctl.exe") + "\" " + arguments;
        start.error = root_.Path() / "error";
        start.outputPipe = writeEnd.Get();
        const ProgramInJob client(start);
        WaitForSingleObject(client.Process(), kClientEndsMs);
        return std::to_string(client.ExitCode()) + " " + ReadText(root_.File("error"));
    }

private:
    TempFolder root_;
    FirmwareRegistry registry_;
};

TEST_F(ClosedPipe, Log_whose_reader_has_gone_ends_without_an_error)
{
    EXPECT_EQ(Run("log"), "0 ");
    EXPECT_EQ(Run("log --json"), "0 ");
    EXPECT_EQ(Run("log --follow"), "0 ");
}

TEST_F(ClosedPipe, Table_that_is_shown_again_and_again_ends_with_its_reader)
{
    EXPECT_EQ(Run("ps --watch 1"), "0 ");
}

TEST_F(ClosedPipe, Page_and_metrics_that_are_written_again_and_again_end_with_their_reader)
{
    EXPECT_EQ(Run("report --every 1 --output -"), "0 ");
    EXPECT_EQ(Run("metrics --every 1"), "0 ");
}

TEST_F(ClosedPipe, Answer_that_nobody_reads_keeps_its_exit_code)
{
    EXPECT_EQ(Run("completion bash"), "0 ");
    EXPECT_THAT(Run("log --file C:\\missing.log"),
                testing::StartsWith("5 daemonctl: C:\\missing.log cannot be read: "));
}

} // namespace
} // namespace vqrx::test
