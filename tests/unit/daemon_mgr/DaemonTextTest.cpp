#include "DaemonText.h"

#include <gtest/gtest.h>

namespace vqrx::test {

using system::daemon::daemon_mgr::v0::DescribeCommand;
using system::daemon::daemon_mgr::v0::DescribeDaemon;
using system::daemon::daemon_mgr::v0::DescribeEnd;

TEST(Description, names_daemon_and_process_and_ends_in_a_blank)
{
    EXPECT_EQ("DaemonId(3) PId(4294967295) : a.exe -x two words ",
              DescribeDaemon(3, 4294967295U, DescribeCommand("a.exe", {"-x", "two words"})));
}

TEST(Description, before_the_first_launch_has_no_daemon_part)
{
    EXPECT_EQ("a.exe ", DescribeDaemon(3, 0, DescribeCommand("a.exe", {})));
}

TEST(Description, of_a_service_is_its_name_without_a_blank)
{
    EXPECT_EQ("DaemonId(1) PId(2) : Svc", DescribeDaemon(1, 2, "Svc"));
}

TEST(End, of_an_ordinary_program_has_nothing_between_in_and_the_colon)
{
    EXPECT_EQ("Exception caught in : Unknown (0x0)", DescribeEnd("", 0));
}

TEST(End, of_a_service_that_crashed_names_service_and_exception)
{
    EXPECT_EQ("Exception caught in Svc: Access violation", DescribeEnd("Svc", 0xC0000005));
}

TEST(End, with_an_exit_code_that_cannot_be_read_shows_all_ones)
{
    EXPECT_EQ("Exception caught in : Unknown (0xffffffff)", DescribeEnd("", 0xFFFFFFFF));
}

} // namespace vqrx::test
