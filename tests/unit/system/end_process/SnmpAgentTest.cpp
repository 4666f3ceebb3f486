#include "end_process/SnmpAgent.h"

#include <gtest/gtest.h>

namespace vqrx::test {

using system::end_process::v1::IsSnmpAgent;

TEST(SnmpAgentTest, Agent_is_found_in_upper_and_lower_case)
{
    EXPECT_TRUE(IsSnmpAgent("D:\\FW\\App\\KXSNMP.EXE"));
    EXPECT_TRUE(IsSnmpAgent("kxsnmp"));
}

TEST(SnmpAgentTest, Agent_is_found_if_the_name_is_anywhere_in_the_path)
{
    EXPECT_TRUE(IsSnmpAgent("D:\\Kxsnmp\\agent.exe"));
}

TEST(SnmpAgentTest, Path_without_the_whole_name_is_not_the_agent)
{
    EXPECT_FALSE(IsSnmpAgent("kxsnm"));
    EXPECT_FALSE(IsSnmpAgent(""));
    EXPECT_FALSE(IsSnmpAgent("D:\\FW\\App\\snmpkx.exe"));
}

} // namespace vqrx::test
