#include "CommandLine.h"

#include <gtest/gtest.h>

namespace vqrx::test {

using system::daemon::daemon_mgr::v0::BuildCommandLine;

TEST(CommandLine, of_a_path_without_blanks_and_no_arguments_is_the_path_and_one_space)
{
    EXPECT_EQ("C:\\a.exe ", BuildCommandLine("C:\\a.exe", {}));
}

TEST(CommandLine, quotes_a_path_and_arguments_that_contain_a_space)
{
    EXPECT_EQ("\"C:\\Program Files\\a.exe\" -x \"two words\" ",
              BuildCommandLine("C:\\Program Files\\a.exe", {"-x", "two words"}));
}

TEST(CommandLine, does_not_quote_for_tabs_and_leaves_quotes_alone)
{
    EXPECT_EQ("a.exe x\ty say\"hi\" \"in \"quotes\" too\" ",
              BuildCommandLine("a.exe", {"x\ty", "say\"hi\"", "in \"quotes\" too"}));
}

TEST(CommandLine, keeps_an_empty_argument_as_a_second_space)
{
    EXPECT_EQ("a.exe  b ", BuildCommandLine("a.exe", {"", "b"}));
}

} // namespace vqrx::test
