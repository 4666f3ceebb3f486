#pragma once

#include <windows.h>

namespace vqrx::test {

/// Returns whether this program runs under Wine, not under Windows itself.
inline bool RunsUnderWine()
{
    return GetProcAddress(GetModuleHandleA("ntdll"), "wine_get_version") != nullptr;
}

} // namespace vqrx::test
