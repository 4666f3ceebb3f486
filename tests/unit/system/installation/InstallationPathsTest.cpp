#include "installation/InstallationPaths.h"

#include <gtest/gtest.h>

namespace vqrx::test {
namespace {

using system::installation::v1::RootFromPathname;

TEST(RootFromPathname, is_what_stands_before_App)
{
    EXPECT_EQ(RootFromPathname(R"(E:\FW\App\bin)"), R"(E:\FW)");
    EXPECT_EQ(RootFromPathname(R"(E:\FW\App)"), R"(E:\FW)");
}

TEST(RootFromPathname, is_the_whole_value_without_App)
{
    EXPECT_EQ(RootFromPathname(R"(E:\FW)"), R"(E:\FW)");
    EXPECT_EQ(RootFromPathname(""), "");
}

TEST(RootFromPathname, ends_at_the_first_App_of_several)
{
    EXPECT_EQ(RootFromPathname(R"(E:\App\FW\App)"), "E:");
}

TEST(RootFromPathname, ends_at_any_name_that_begins_with_App)
{
    EXPECT_EQ(RootFromPathname(R"(C:\Apps\x)"), "C:");
}

TEST(RootFromPathname, looks_at_the_case_of_letters_and_at_the_separator)
{
    EXPECT_EQ(RootFromPathname(R"(E:\FW\app\bin)"), R"(E:\FW\app\bin)");
    EXPECT_EQ(RootFromPathname(R"(E:\FW\MyApp)"), R"(E:\FW\MyApp)");
    EXPECT_EQ(RootFromPathname("E:/FW/App"), "E:/FW/App");
}

TEST(InstallationPaths, lie_below_the_root)
{
    EXPECT_EQ(system::installation::v1::AppFolder(R"(E:\FW)"), R"(E:\FW\App)");
    EXPECT_EQ(system::installation::v1::LogFolder(R"(E:\FW)"), R"(E:\FW\Logs)");
    EXPECT_EQ(system::installation::v1::LogFile(R"(E:\FW)"), R"(E:\FW\Logs\DaemonManager.log)");
}

TEST(RootFromPathname, may_be_empty)
{
    EXPECT_EQ(RootFromPathname(R"(\App)"), "");
}

} // namespace
} // namespace vqrx::test
