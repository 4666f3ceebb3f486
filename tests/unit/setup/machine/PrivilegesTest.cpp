#include "Privileges.h"

#include "win32/UniqueHandle.h"

#include <windows.h>

#include <gtest/gtest.h>

namespace vqrx::test {
namespace {

// Sets a privilege of this process.
// @return whether it was on
bool Set(const char* privilege, DWORD attributes)
{
    system::win32::v1::UniqueKernelHandle token;
    EXPECT_NE(FALSE, OpenProcessToken(GetCurrentProcess(), TOKEN_ADJUST_PRIVILEGES | TOKEN_QUERY,
                                      token.Put()));
    TOKEN_PRIVILEGES wanted{1, {{{}, attributes}}};
    EXPECT_NE(FALSE, LookupPrivilegeValueA(nullptr, privilege, &wanted.Privileges[0].Luid));
    PRIVILEGE_SET asked{1, PRIVILEGE_SET_ALL_NECESSARY, {wanted.Privileges[0]}};
    BOOL isOn = FALSE;
    EXPECT_NE(FALSE, PrivilegeCheck(token.Get(), &asked, &isOn));
    EXPECT_NE(FALSE, AdjustTokenPrivileges(token.Get(), FALSE, &wanted, 0, nullptr, nullptr));
    return isOn != FALSE;
}

TEST(Privileges, Are_on_afterwards)
{
    Set(SE_DEBUG_NAME, 0);
    ASSERT_FALSE(Set(SE_DEBUG_NAME, 0));
    setup::v0::SwitchOnPrivileges({SE_DEBUG_NAME});
    EXPECT_TRUE(Set(SE_DEBUG_NAME, SE_PRIVILEGE_ENABLED));
}

} // namespace
} // namespace vqrx::test
