#include "FinishOutput.h"

#include "FullDisk.h"
#include "PrintText.h"

#include <gtest/gtest.h>

namespace vqrx::test {
namespace {

using client::v0::FinishOutput;

TEST(FinishOutput, reports_output_that_could_not_be_written)
{
    testing::internal::CaptureStderr();
    int exitCode = 0;
    {
        const FullDisk disk;
        client::v0::PrintText("one line\n");
        exitCode = FinishOutput("daemonctl", 0);
    }
    EXPECT_EQ(exitCode, 4);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "daemonctl: standard output could not be written\n"
              "  Free space on the disk, or write to another file.\n");
}

TEST(FinishOutput, keeps_the_exit_code_if_everything_was_written)
{
    testing::internal::CaptureStdout();
    client::v0::PrintText("one line\nanother\n");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "one line\nanother\n");
    EXPECT_EQ(FinishOutput("daemonctl", 0), 0);
    EXPECT_EQ(FinishOutput("daemonctl", 5), 5);
}

} // namespace
} // namespace vqrx::test
