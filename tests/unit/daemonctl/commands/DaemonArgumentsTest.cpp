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

TEST(DaemonArguments, behind_the_path_of_a_launch_are_taken_out)
{
    EXPECT_EQ(SplitCommandLine({"daemonctl", "launch", "a.exe", "--help"}),
              (CommandLine{{"daemonctl", "launch", "a.exe"}, {"--help"}}));
}

TEST(DaemonArguments, behind_the_process_of_an_attach_are_taken_out)
{
    EXPECT_EQ(SplitCommandLine({"daemonctl", "attach", "12", "-x", "y"}),
              (CommandLine{{"daemonctl", "attach", "12"}, {"-x", "y"}}));
}

TEST(DaemonArguments, stay_as_they_are_whatever_they_are)
{
    const Words words = {"--", "-x", "[::1]", "[a,b]", "[]", "", "--listen=[::1]", "stop", "--"};
    Words line = {"daemonctl", "launch", "a.exe"};
    line.insert(line.end(), words.begin(), words.end());
    EXPECT_EQ(SplitCommandLine(line), (CommandLine{{"daemonctl", "launch", "a.exe"}, words}));
}

TEST(DaemonArguments, begin_behind_a_path_that_two_dashes_precede)
{
    EXPECT_EQ(SplitCommandLine({"daemonctl", "launch", "--", "-a.exe", "[x]"}),
              (CommandLine{{"daemonctl", "launch", "--", "-a.exe"}, {"[x]"}}));
}

TEST(DaemonArguments, that_are_not_there_are_none)
{
    for (const Words& words :
         {Words{}, Words{"daemonctl"}, Words{"daemonctl", "launch"},
          Words{"daemonctl", "launch", "a.exe"}, Words{"daemonctl", "launch", "--"}}) {
        EXPECT_EQ(SplitCommandLine(words), (CommandLine{words, {}}));
    }
}

TEST(DaemonArguments, of_other_commands_and_before_the_path_are_ours)
{
    for (const Words& words :
         {Words{"daemonctl", "stop", "1", "--help"}, Words{"daemonctl", "launch", "--help", "x"}}) {
        EXPECT_EQ(SplitCommandLine(words), (CommandLine{words, {}}));
    }
}

} // namespace
} // namespace vqrx::test
