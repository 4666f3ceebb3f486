#include "DaemonArguments.h"

#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

namespace vqrx::client::v0 {

void PrintTo(const CommandLine& line, std::ostream* stream)
{
    *stream << testing::PrintToString(line.ours) << " " << testing::PrintToString(line.daemons);
}

} // namespace vqrx::client::v0

namespace vqrx::test {
namespace {

using client::v0::CommandLine;
using client::v0::SplitCommandLine;
using Words = std::vector<std::string>;

TEST(DaemonArguments, begin_after_the_path_of_launch)
{
    EXPECT_EQ(SplitCommandLine({"daemonctl", "launch", "a.exe", "--help"}),
              (CommandLine{{"daemonctl", "launch", "a.exe"}, {"--help"}}));
}

TEST(DaemonArguments, begin_after_the_process_id_of_attach)
{
    EXPECT_EQ(SplitCommandLine({"daemonctl", "attach", "12", "-x", "y"}),
              (CommandLine{{"daemonctl", "attach", "12"}, {"-x", "y"}}));
}

TEST(DaemonArguments, stay_unchanged_even_with_dashes_or_brackets)
{
    const Words words = {"--", "-x", "[::1]", "[a,b]", "[]", "", "--listen=[::1]", "stop", "--"};
    Words line = {"daemonctl", "launch", "a.exe"};
    line.insert(line.end(), words.begin(), words.end());
    EXPECT_EQ(SplitCommandLine(line), (CommandLine{{"daemonctl", "launch", "a.exe"}, words}));
}

TEST(DaemonArguments, begin_after_a_path_that_follows_the_option_raw)
{
    EXPECT_EQ(SplitCommandLine({"daemonctl", "launch", "--raw", "a.exe", "--raw", "-x"}),
              (CommandLine{{"daemonctl", "launch", "--raw", "a.exe"}, {"--raw", "-x"}}));
    EXPECT_EQ(SplitCommandLine({"daemonctl", "launch", "--raw", "--wait", "10", "a.exe", "-x"}),
              (CommandLine{{"daemonctl", "launch", "--raw", "--wait", "10", "a.exe"}, {"-x"}}));
    EXPECT_EQ(SplitCommandLine({"daemonctl", "attach", "--raw", "--", "12", "-x"}),
              (CommandLine{{"daemonctl", "attach", "--raw", "--", "12"}, {"-x"}}));
    EXPECT_EQ(SplitCommandLine({"daemonctl", "launch", "--raw"}),
              (CommandLine{{"daemonctl", "launch", "--raw"}, {}}));
}

TEST(DaemonArguments, begin_after_a_path_that_follows_two_dashes)
{
    EXPECT_EQ(SplitCommandLine({"daemonctl", "launch", "--", "-a.exe", "[x]"}),
              (CommandLine{{"daemonctl", "launch", "--", "-a.exe"}, {"[x]"}}));
}

TEST(DaemonArguments, begin_after_the_path_that_follows_the_option_of_launch)
{
    EXPECT_EQ(SplitCommandLine({"daemonctl", "launch", "--wait", "10", "a.exe", "--wait", "3"}),
              (CommandLine{{"daemonctl", "launch", "--wait", "10", "a.exe"}, {"--wait", "3"}}));
    EXPECT_EQ(SplitCommandLine({"daemonctl", "launch", "--wait=10", "--", "-a.exe", "x"}),
              (CommandLine{{"daemonctl", "launch", "--wait=10", "--", "-a.exe"}, {"x"}}));
    EXPECT_EQ(SplitCommandLine({"daemonctl", "launch", "--wait"}),
              (CommandLine{{"daemonctl", "launch", "--wait"}, {}}));
}

TEST(DaemonArguments, are_empty_if_the_command_line_ends_before_them)
{
    for (const Words& words :
         {Words{}, Words{"daemonctl"}, Words{"daemonctl", "launch"},
          Words{"daemonctl", "launch", "a.exe"}, Words{"daemonctl", "launch", "--"}}) {
        EXPECT_EQ(SplitCommandLine(words), (CommandLine{words, {}}));
    }
}

TEST(DaemonArguments, exclude_other_commands_and_options_before_the_path)
{
    for (const Words& words :
         {Words{"daemonctl", "stop", "1", "--help"}, Words{"daemonctl", "launch", "--help", "x"}}) {
        EXPECT_EQ(SplitCommandLine(words), (CommandLine{words, {}}));
    }
}

TEST(HelpCommand, becomes_the_option_of_the_command)
{
    using client::v0::WithoutHelpCommand;
    EXPECT_EQ(WithoutHelpCommand({"daemonctl", "help"}), (Words{"daemonctl", "--help"}));
    EXPECT_EQ(WithoutHelpCommand({"daemonctl", "help", "log", "x"}),
              (Words{"daemonctl", "log", "--help"}));
    EXPECT_EQ(WithoutHelpCommand({"daemonctl", "launch", "help"}),
              (Words{"daemonctl", "launch", "help"}));
    EXPECT_EQ(WithoutHelpCommand({"daemonctl"}), (Words{"daemonctl"}));
}

} // namespace
} // namespace vqrx::test
