#pragma once

#include <windows.h>

namespace vqrx::test {

/// The class of WMI's locator, CLSID_WbemLocator of wbemidl.h; mingw's libraries do not define it.
inline constexpr CLSID kWbemLocator = {
    0x4590F811, 0x1D3A, 0x11D0, {0x89, 0x1F, 0x00, 0xAA, 0x00, 0x4B, 0x2E, 0x24}};

} // namespace vqrx::test
