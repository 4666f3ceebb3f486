#include "ComSecurityCheck.h"

#include <windows.h>

namespace vqrx::client::v0 {

bool HasMachineLimits()
{
    DWORD size = 0;
    return RegGetValueW(HKEY_LOCAL_MACHINE, LR"(SOFTWARE\Microsoft\Ole)",
                        L"MachineAccessRestriction", RRF_RT_REG_BINARY, nullptr, nullptr,
                        &size) == ERROR_SUCCESS;
}

} // namespace vqrx::client::v0
