#include "Privileges.h"

#include "win32/UniqueHandle.h"

#include <windows.h>

namespace vqrx::setup::v0 {

using system::win32::v1::UniqueKernelHandle;

void SwitchOnPrivileges(std::initializer_list<const char*> privileges) noexcept
{
    UniqueKernelHandle token;
    if (OpenProcessToken(GetCurrentProcess(), TOKEN_ADJUST_PRIVILEGES | TOKEN_QUERY, token.Put()) ==
        FALSE) {
        return;
    }
    for (const char* const privilege : privileges) {
        TOKEN_PRIVILEGES change{};
        change.PrivilegeCount = 1;
        change.Privileges[0].Attributes = SE_PRIVILEGE_ENABLED;
        if (LookupPrivilegeValueA(nullptr, privilege, &change.Privileges[0].Luid) != FALSE) {
            AdjustTokenPrivileges(token.Get(), FALSE, &change, 0, nullptr, nullptr);
        }
    }
}

} // namespace vqrx::setup::v0
