#include "CommandLine.h"

#include <gtest/gtest.h>

namespace vqrx::test {

using system::daemon::daemon_mgr::v0::BuildCommandLine;

TEST(CommandLineTest, Path_without_blanks_and_arguments_is_followed_by_one_space)
{
    EXPECT_EQ("C:\\a.exe ", BuildCommandLine("C:\\a.exe", {}));
}

TEST(CommandLineTest, Path_and_arguments_with_a_space_are_quoted)
{
    EXPECT_EQ("\"C:\\Program Files\\a.exe\" -x \"two words\" ",
              BuildCommandLine("C:\\Program Files\\a.exe", {"-x", "two words"}));
}

TEST(CommandLineTest, Tabs_cause_no_quotes_and_inner_quotes_are_not_escaped)
{
    EXPECT_EQ("a.exe x\ty say\"hi\" \"in \"quotes\" too\" ",
              BuildCommandLine("a.exe", {"x\ty", "say\"hi\"", "in \"quotes\" too"}));
}

TEST(CommandLineTest, Empty_argument_gives_only_its_space)
{
    EXPECT_EQ("a.exe  b ", BuildCommandLine("a.exe", {"", "b"}));
}

} // namespace vqrx::test
