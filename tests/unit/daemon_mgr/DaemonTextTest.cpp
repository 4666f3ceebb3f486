#include "DaemonText.h"

#include <gtest/gtest.h>

namespace vqrx::test {

using system::daemon::daemon_mgr::v0::DescribeCommand;
using system::daemon::daemon_mgr::v0::DescribeDaemon;
using system::daemon::daemon_mgr::v0::DescribeEnd;

TEST(DaemonTextTest, Description_shows_daemon_id_process_id_and_command_and_ends_in_a_blank)
{
    EXPECT_EQ("DaemonId(3) PId(4294967295) : a.exe -x two words ",
              DescribeDaemon(3, 4294967295U, DescribeCommand("a.exe", {"-x", "two words"})));
}

TEST(DaemonTextTest, Description_before_the_first_start_shows_no_ids)
{
    EXPECT_EQ("a.exe ", DescribeDaemon(3, 0, DescribeCommand("a.exe", {})));
}

TEST(DaemonTextTest, Description_of_a_service_ends_in_its_name_without_a_blank)
{
    EXPECT_EQ("DaemonId(1) PId(2) : Svc", DescribeDaemon(1, 2, "Svc"));
}

TEST(DaemonTextTest, End_of_an_ordinary_program_shows_nothing_between_in_and_the_colon)
{
    EXPECT_EQ("Exception caught in : Unknown (0x0)", DescribeEnd("", 0));
}

TEST(DaemonTextTest, End_of_a_crashed_service_shows_its_name_and_the_exception)
{
    EXPECT_EQ("Exception caught in Svc: Access violation", DescribeEnd("Svc", 0xC0000005));
}

TEST(DaemonTextTest, End_with_an_unreadable_exit_code_shows_0xffffffff)
{
    EXPECT_EQ("Exception caught in : Unknown (0xffffffff)", DescribeEnd("", 0xFFFFFFFF));
}

} // namespace vqrx::test
