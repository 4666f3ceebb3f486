#include "Commands.h"

#include "FinishOutput.h"
#include "FullDisk.h"
#include "RingModel.h"
#include "TempFolder.h"

#include <gtest/gtest.h>

#include <fstream>
#include <string>

namespace vqrx::test {
namespace {

int RunOnFullDisk(const std::string& commandLine, std::string& errors)
{
    CLI::App app("test", "daemonctl");
    int exitCode = 0;
    client::v0::AddLogCommand(app, exitCode, {});
    client::v0::AddReportCommand(app, exitCode, {});
    testing::internal::CaptureStderr();
    {
        const FullDisk disk;
        app.parse(commandLine);
        exitCode = client::v0::FinishOutput("daemonctl", exitCode);
    }
    errors = testing::internal::GetCapturedStderr();
    return exitCode;
}

TEST(Commands, fail_if_their_output_cannot_be_written)
{
    const TempFolder folder;
    RingModel ring;
    ring.Write("Start DaemonId(3) PId(7) : a.exe ");
    std::ofstream(folder.File("a.log"), std::ios::binary) << ring.Bytes();
    const std::string file = " --file \"" + folder.File("a.log") + "\"";
    for (const std::string& command : {"log" + file, "log --json" + file, "report -o -" + file}) {
        std::string errors;
        EXPECT_EQ(RunOnFullDisk(command, errors), 4) << command;
        EXPECT_EQ(errors, "daemonctl: standard output could not be written\n"
                          "  Free space on the disk, or write to another file.\n")
            << command;
    }
}

} // namespace
} // namespace vqrx::test
