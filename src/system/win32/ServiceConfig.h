#pragma once

#include <windows.h>

namespace vqrx::system::win32::v1 {

/// The most bytes that QueryServiceConfig writes: the limit that Microsoft documents for the call.
inline constexpr DWORD kServiceConfigBytes = 8192;

} // namespace vqrx::system::win32::v1
