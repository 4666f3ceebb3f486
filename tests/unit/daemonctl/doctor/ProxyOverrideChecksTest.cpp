#include "ProxyOverrideChecks.h"

#include "ExpectFinding.h"

#include <gtest/gtest.h>

namespace vqrx::test {
namespace {

using namespace client::v0;

TEST(ProxyOverrideCheck, Is_ok_if_every_user_has_the_proxy_of_the_machine)
{
    ExpectFinding(JudgeProxyOverrides({}), Verdict::kOk,
                  "no user who is logged on has a proxy/stub of his own");
}

TEST(ProxyOverrideCheck, Warns_if_the_users_are_not_all_known)
{
    ExpectFinding(JudgeProxyOverrides({{}, 5}), Verdict::kWarning,
                  "Windows does not list the users who are logged on: error 5");
    EXPECT_TRUE(
        JudgeProxyOverrides({{{"key", "user", "library"}}, 5})
            .text.ends_with("\nthere may be more: Windows does not list all users: error 5"));
}

TEST(ProxyOverrideCheck, Names_user_and_library_and_the_command_that_removes_the_key)
{
    const Finding finding =
        JudgeProxyOverrides({{{R"(HKU\S-1-5-21-1\Software\Classes\CLSID\{C3})", R"(PC\guest)",
                               R"(C:\Users\guest\evil.dll)"},
                              {R"(HKU\%x%\Software\Classes\Interface\{C3})", "%x%", ""}}});
    ExpectFinding(finding, Verdict::kWarning,
                  "2 registrations of the proxy/stub for one user\n"
                  "programs of PC\\guest load C:\\Users\\guest\\evil.dll: "
                  "HKU\\S-1-5-21-1\\Software\\Classes\\CLSID\\{C3}\n"
                  "programs of %x% load another library: "
                  "HKU\\%x%\\Software\\Classes\\Interface\\{C3}");
    EXPECT_EQ(finding.remedy,
              "As administrator, or as this user:\n"
              "reg delete \"HKU\\S-1-5-21-1\\Software\\Classes\\CLSID\\{C3}\" /f\n"
              "Remove the key with regedit: HKU\\%x%\\Software\\Classes\\Interface\\{C3}");
}

} // namespace
} // namespace vqrx::test
