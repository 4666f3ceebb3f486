#pragma once

#include "win32/UniqueHandle.h"

#include <windows.h>

#include <array>
#include <cstddef>

namespace vqrx::test {

/// Returns the token of this process as an administrator has it before Windows asks for his
/// consent: the group of the administrators takes rights away only, and a privilege is missing.
inline system::win32::v1::UniqueKernelHandle LimitedToken()
{
    system::win32::v1::UniqueKernelHandle own;
    system::win32::v1::UniqueKernelHandle less;
    alignas(SID) std::array<std::byte, SECURITY_MAX_SID_SIZE> administrators{};
    auto size = static_cast<DWORD>(administrators.size());
    CreateWellKnownSid(WinBuiltinAdministratorsSid, nullptr, administrators.data(), &size);
    SID_AND_ATTRIBUTES group{administrators.data(), 0};
    LUID_AND_ATTRIBUTES privilege{};
    LookupPrivilegeValueA(nullptr, SE_DEBUG_NAME, &privilege.Luid);
    if (OpenProcessToken(GetCurrentProcess(), TOKEN_ALL_ACCESS, own.Put()) == FALSE ||
        CreateRestrictedToken(own.Get(), 0, 1, &group, 1, &privilege, 0, nullptr, less.Put()) ==
            FALSE) {
        less.Reset();
    }
    return less;
}

} // namespace vqrx::test
