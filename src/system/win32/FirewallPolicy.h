#pragma once

#include <windows.h>

namespace vqrx::system::win32::v1 {

/// Class id of NetFwPolicy2 of netfw.h: the policy of Windows Firewall with Advanced Security. Not
/// every import library defines it.
inline constexpr CLSID kNetFwPolicy2 = {
    0xE2B3C97F, 0x6AE1, 0x41AC, {0x81, 0x7A, 0xF6, 0xF9, 0x21, 0x66, 0xD7, 0xDD}};

} // namespace vqrx::system::win32::v1
