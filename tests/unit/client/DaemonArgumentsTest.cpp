#include "DaemonArguments.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace vqrx::test {
namespace {

using client::v0::ProtectDaemonArguments;
using Words = std::vector<std::string>;

TEST(DaemonArguments, behind_the_path_of_a_launch_are_protected)
{
    EXPECT_EQ(ProtectDaemonArguments({"daemonctl", "launch", "a.exe", "--help"}),
              (Words{"daemonctl", "launch", "a.exe", "--", "--help"}));
}

TEST(DaemonArguments, behind_the_process_of_an_attach_are_protected)
{
    EXPECT_EQ(ProtectDaemonArguments({"daemonctl", "attach", "12", "-x", "y"}),
              (Words{"daemonctl", "attach", "12", "--", "-x", "y"}));
}

TEST(DaemonArguments, may_begin_with_two_dashes_of_their_own)
{
    EXPECT_EQ(ProtectDaemonArguments({"daemonctl", "launch", "a.exe", "--", "-x"}),
              (Words{"daemonctl", "launch", "a.exe", "--", "--", "-x"}));
}

TEST(DaemonArguments, that_are_not_there_need_no_protection)
{
    for (const Words& words : {Words{"daemonctl"}, Words{"daemonctl", "launch"},
                               Words{"daemonctl", "launch", "a.exe"}}) {
        EXPECT_EQ(ProtectDaemonArguments(words), words);
    }
}

TEST(DaemonArguments, of_other_commands_and_before_the_path_are_ours)
{
    for (const Words& words :
         {Words{"daemonctl", "stop", "1", "--help"}, Words{"daemonctl", "launch", "--help", "x"},
          Words{"daemonctl", "launch", "--", "a.exe", "-x"}}) {
        EXPECT_EQ(ProtectDaemonArguments(words), words);
    }
}

} // namespace
} // namespace vqrx::test
