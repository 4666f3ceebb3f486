#include "ComSecurityCheck.h"

#include <windows.h>

#include <gtest/gtest.h>

namespace vqrx::test {
namespace {

constexpr const char* kOle = R"(SOFTWARE\Microsoft\Ole)";
constexpr const char* kLimits = "MachineAccessRestriction";

// Wine sets no limits. Where Windows sets some, they stay as they are.
TEST(ComSecurityFacts, Limits_of_the_machine_are_those_of_the_registry)
{
    if (client::v0::HasMachineLimits()) {
        EXPECT_EQ(RegGetValueA(HKEY_LOCAL_MACHINE, kOle, kLimits, RRF_RT_REG_BINARY, nullptr,
                               nullptr, nullptr),
                  ERROR_SUCCESS);
        return;
    }
    const BYTE value = 1;
    ASSERT_EQ(RegSetKeyValueA(HKEY_LOCAL_MACHINE, kOle, kLimits, REG_BINARY, &value, sizeof value),
              ERROR_SUCCESS);
    EXPECT_TRUE(client::v0::HasMachineLimits());
    EXPECT_EQ(RegDeleteKeyValueA(HKEY_LOCAL_MACHINE, kOle, kLimits), ERROR_SUCCESS);
    EXPECT_FALSE(client::v0::HasMachineLimits());
}

} // namespace
} // namespace vqrx::test
