#include "ProxyOverrideChecks.h"

#include "ImportPatch.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace vqrx::test {
namespace {

using namespace client::v0;

constexpr const char* kClass = R"(Software\Classes\CLSID\{C307E9F6-67C0-4C74-B1BD-37EFB9882701})";
constexpr const char* kClassOf32Bits =
    R"(Software\Classes\Wow6432Node\CLSID\{C307E9F6-67C0-4C74-B1BD-37EFB9882701})";
constexpr const char* kInterface =
    R"(Software\Classes\Interface\{C307E9F6-67C0-4C74-B1BD-37EFB9882701})";

// A registration for the user of this test. The destructor removes it.
class UsersRegistration {
public:
    UsersRegistration(const std::string& key, const char* subkey, const std::string& value)
        : key_(key)
    {
        EXPECT_EQ(RegSetKeyValueA(HKEY_CURRENT_USER, (key + subkey).c_str(), nullptr, REG_SZ,
                                  value.c_str(), static_cast<DWORD>(value.size() + 1)),
                  ERROR_SUCCESS);
    }
    UsersRegistration(const UsersRegistration&) = delete;
    UsersRegistration& operator=(const UsersRegistration&) = delete;
    ~UsersRegistration() { RegDeleteTreeA(HKEY_CURRENT_USER, key_.c_str()); }

private:
    std::string key_;
};

TEST(ProxyOverrides, Are_none_on_a_machine_whose_users_registered_nothing)
{
    const ProxyOverrideFacts facts = GatherProxyOverrides();
    EXPECT_EQ(facts.found.size(), 0U);
    EXPECT_EQ(facts.error, 0U);
}

LSTATUS WINAPI RefuseEnumeration(HKEY, DWORD, LPWSTR, LPDWORD, LPDWORD, LPWSTR, LPDWORD, PFILETIME)
{
    return ERROR_ACCESS_DENIED;
}

TEST(ProxyOverrides, Are_not_called_none_if_Windows_does_not_list_the_users)
{
    const ImportPatch patch("RegEnumKeyExW", RefuseEnumeration);
    EXPECT_EQ(GatherProxyOverrides().error, static_cast<std::uint32_t>(ERROR_ACCESS_DENIED));
}

TEST(ProxyOverrides, Are_found_for_the_class_and_for_the_interface)
{
    const UsersRegistration library(kClass, R"(\InProcServer32)", R"(C:\guest\evil.dll)");
    const UsersRegistration other(kInterface, R"(\ProxyStubClsid32)", "{other}");
    const std::vector<ProxyOverride> found = GatherProxyOverrides().found;
    ASSERT_EQ(found.size(), 2U);
    EXPECT_EQ(found[0].library, R"(C:\guest\evil.dll)");
    EXPECT_EQ(found[1].library, "{other}");
    EXPECT_NE(found[0].user, "");
    EXPECT_TRUE(found[0].key.starts_with(R"(HKU\S-1-5-)")) << found[0].key;
    EXPECT_TRUE(found[0].key.ends_with(kClass)) << found[0].key;
    EXPECT_TRUE(found[1].key.ends_with(kInterface)) << found[1].key;
}

TEST(ProxyOverrides, Are_found_for_programs_of_32_bits)
{
    const UsersRegistration library(kClassOf32Bits, R"(\InProcServer32)", R"(C:\guest\evil.dll)");
    const std::vector<ProxyOverride> found = GatherProxyOverrides().found;
    ASSERT_EQ(found.size(), 1U);
    EXPECT_EQ(found[0].library, R"(C:\guest\evil.dll)");
    EXPECT_TRUE(found[0].key.ends_with(kClassOf32Bits)) << found[0].key;
}

} // namespace
} // namespace vqrx::test
