#include "ComSecurityCheck.h"

#include <windows.h>

#include <array>

namespace vqrx::client::v0 {
namespace {

// Windows keeps its own limits as bytes, a policy keeps limits as a text. An empty text limits
// nobody.
bool HasLimit(const wchar_t* key, const wchar_t* value)
{
    std::array<wchar_t, 2> data{}; // too small for a limit
    DWORD type = REG_NONE;
    DWORD size = sizeof data;
    const LSTATUS result =
        RegGetValueW(HKEY_LOCAL_MACHINE, key, value, RRF_RT_REG_BINARY | RRF_RT_REG_SZ, &type,
                     data.data(), &size);
    return result == ERROR_MORE_DATA ||
           (result == ERROR_SUCCESS && (type == REG_BINARY || data.front() != L'\0'));
}

} // namespace

bool HasMachineLimits()
{
    constexpr const wchar_t* policies = LR"(SOFTWARE\Policies\Microsoft\Windows NT\DCOM)";
    return HasLimit(LR"(SOFTWARE\Microsoft\Ole)", L"MachineAccessRestriction") ||
           HasLimit(policies, L"MachineAccessRestriction");
}

} // namespace vqrx::client::v0
