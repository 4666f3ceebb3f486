#include "commands/FinishOutput.h"

#include "RingModel.h"
#include "TempFolder.h"
#include "commands/LogCommand.h"
#include "commands/ReportCommand.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iostream>
#include <streambuf>
#include <string>

namespace vqrx::test {
namespace {

using client::v0::FinishOutput;

/// Takes what fits in a buffer, then the disk is full.
class FullDisk : public std::streambuf {
public:
    FullDisk()
        : before_(std::cout.rdbuf(this))
    {
    }

    FullDisk(const FullDisk&) = delete;
    FullDisk& operator=(const FullDisk&) = delete;
    ~FullDisk() override
    {
        std::cout.rdbuf(before_); // clears its state as well
    }

protected:
    int_type overflow(int_type character) override { return character; }
    int sync() override { return -1; }

private:
    std::streambuf* before_;
};

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
        exitCode = FinishOutput("daemonctl", exitCode);
    }
    errors = testing::internal::GetCapturedStderr();
    return exitCode;
}

TEST(Output, that_cannot_be_written_is_an_error)
{
    const TempFolder folder;
    RingModel ring;
    ring.Write("Start DaemonId(3) PId(7) : a.exe ");
    std::ofstream(folder.File("a.log"), std::ios::binary) << ring.Bytes();
    const std::string file = " --file \"" + folder.File("a.log") + "\"";
    for (const std::string& command : {"log" + file, "log --json" + file, "report -o -" + file}) {
        std::string errors;
        EXPECT_EQ(RunOnFullDisk(command, errors), 4) << command;
        EXPECT_EQ(errors, "daemonctl: standard output could not be written\n") << command;
    }
}

TEST(Output, that_was_written_leaves_the_exit_code)
{
    EXPECT_EQ(FinishOutput("daemonctl", 0), 0);
    EXPECT_EQ(FinishOutput("daemonctl", 5), 5);
}

} // namespace
} // namespace vqrx::test
