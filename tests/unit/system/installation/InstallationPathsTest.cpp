#include "installation/InstallationPaths.h"

#include <gtest/gtest.h>

namespace vqrx::test {
namespace {

using system::installation::v1::RootFromPathname;

TEST(InstallationPathsTest, Root_is_the_part_of_the_value_before_App)
{
    EXPECT_EQ(RootFromPathname(R"(E:\FW\App\bin)"), R"(E:\FW)");
    EXPECT_EQ(RootFromPathname(R"(E:\FW\App)"), R"(E:\FW)");
}

TEST(InstallationPathsTest, Root_is_the_whole_value_if_it_has_no_App)
{
    EXPECT_EQ(RootFromPathname(R"(E:\FW)"), R"(E:\FW)");
    EXPECT_EQ(RootFromPathname(""), "");
}

TEST(InstallationPathsTest, Root_ends_before_the_first_of_several_App)
{
    EXPECT_EQ(RootFromPathname(R"(E:\App\FW\App)"), "E:");
}

TEST(InstallationPathsTest, Root_ends_before_any_name_that_begins_with_App)
{
    EXPECT_EQ(RootFromPathname(R"(C:\Apps\x)"), "C:");
}

TEST(InstallationPathsTest, App_is_found_only_in_this_letter_case_and_after_a_backslash)
{
    EXPECT_EQ(RootFromPathname(R"(E:\FW\app\bin)"), R"(E:\FW\app\bin)");
    EXPECT_EQ(RootFromPathname(R"(E:\FW\MyApp)"), R"(E:\FW\MyApp)");
    EXPECT_EQ(RootFromPathname("E:/FW/App"), "E:/FW/App");
}

TEST(InstallationPathsTest, Folders_and_log_file_are_below_the_root)
{
    EXPECT_EQ(system::installation::v1::AppFolder(R"(E:\FW)"), R"(E:\FW\App)");
    EXPECT_EQ(system::installation::v1::LogFolder(R"(E:\FW)"), R"(E:\FW\Logs)");
    EXPECT_EQ(system::installation::v1::LogFile(R"(E:\FW)"), R"(E:\FW\Logs\DaemonManager.log)");
}

TEST(InstallationPathsTest, Root_is_empty_if_the_value_begins_with_App)
{
    EXPECT_EQ(RootFromPathname(R"(\App)"), "");
}

} // namespace
} // namespace vqrx::test
