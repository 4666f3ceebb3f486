#include "ComSecurityCheck.h"

#include "ImportPatch.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <cstring>
#include <string>

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

// A test must not set a policy for the machine: one value of the policies comes from here.
std::wstring policyValue;
std::wstring policyText;

LSTATUS WINAPI AnswerWithPolicy(HKEY, LPCWSTR key, LPCWSTR value, DWORD, LPDWORD type, PVOID data,
                                LPDWORD size)
{
    if (std::wstring(key) != LR"(SOFTWARE\Policies\Microsoft\Windows NT\DCOM)" ||
        policyValue != value) {
        return ERROR_FILE_NOT_FOUND;
    }
    const std::size_t bytes = (policyText.size() + 1) * sizeof(wchar_t);
    if (*size < bytes) {
        return ERROR_MORE_DATA;
    }
    std::memcpy(data, policyText.c_str(), bytes);
    *type = REG_SZ;
    return ERROR_SUCCESS;
}

TEST(ComSecurityFacts, Group_policy_that_limits_access_is_found)
{
    const ImportPatch patch("RegGetValueW", AnswerWithPolicy);
    policyValue = L"MachineAccessRestriction";
    policyText = L"O:BAG:BAD:(A;;CCDCLC;;;BA)";
    EXPECT_TRUE(client::v0::HasMachineLimits());
    policyText.clear(); // a policy that was taken back
    EXPECT_FALSE(client::v0::HasMachineLimits());
}

// The supervisor cannot be activated, so a limit for that keeps no caller out.
TEST(ComSecurityFacts, Group_policy_that_limits_activation_does_not_count)
{
    const ImportPatch patch("RegGetValueW", AnswerWithPolicy);
    policyText = L"O:BAG:BAD:(A;;CCDCLC;;;BA)";
    for (const wchar_t* value : {L"MachineLaunchRestriction", L"Other"}) {
        policyValue = value;
        EXPECT_FALSE(client::v0::HasMachineLimits());
    }
}

} // namespace
} // namespace vqrx::test
