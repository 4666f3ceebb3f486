#include "SnmpAgent.h"

#include <gtest/gtest.h>

namespace vqrx::test {

using system::daemon::daemon_mgr::v0::IsSnmpAgent;

TEST(SnmpAgent, is_found_by_its_name_in_any_case_of_letters)
{
    EXPECT_TRUE(IsSnmpAgent("D:\\FW\\App\\KXSNMP.EXE"));
    EXPECT_TRUE(IsSnmpAgent("kxsnmp"));
}

TEST(SnmpAgent, is_found_by_its_name_anywhere_in_the_path)
{
    EXPECT_TRUE(IsSnmpAgent("D:\\Kxsnmp\\agent.exe"));
}

TEST(SnmpAgent, is_no_path_of_fewer_than_six_bytes_and_none_without_the_name)
{
    EXPECT_FALSE(IsSnmpAgent("kxsnm"));
    EXPECT_FALSE(IsSnmpAgent(""));
    EXPECT_FALSE(IsSnmpAgent("D:\\FW\\App\\snmpkx.exe"));
}

} // namespace vqrx::test
