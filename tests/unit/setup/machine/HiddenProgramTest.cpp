#include "HiddenProgram.h"

#include "ChildProcess.h"
#include "SetupError.h"

#include <gtest/gtest.h>

#include <string>

namespace vqrx::test {

using setup::v0::RunHidden;
using setup::v0::SetupError;

TEST(HiddenProgram, The_exit_code_of_the_program_comes_back)
{
    EXPECT_EQ(0U, RunHidden(TestProgram("exits_with"), {"0"}).exitCode);
    EXPECT_EQ(7U, RunHidden(TestProgram("exits_with"), {"7"}).exitCode);
}

TEST(HiddenProgram, Standard_output_and_standard_error_come_back)
{
    EXPECT_NE(RunHidden(ProductProgram("daemonctl.exe"), {"--help"}).output.find("Exit codes:"),
              std::string::npos);
    const setup::v0::ProgramAnswer wrong = RunHidden(ProductProgram("daemonctl.exe"), {"nothing"});
    EXPECT_EQ(2U, wrong.exitCode);
    EXPECT_NE(wrong.output.find("nothing"), std::string::npos);
}

TEST(HiddenProgram, A_program_that_does_not_exist_is_an_error)
{
    EXPECT_THROW(static_cast<void>(RunHidden("C:\\no such folder\\x.exe", {})), SetupError);
}

} // namespace vqrx::test
