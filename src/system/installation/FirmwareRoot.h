#pragma once

#include <cstdint>
#include <string>

namespace vqrx::system::installation::v1 {

/// One of the two registry keys below HKEY_LOCAL_MACHINE that can name the firmware root.
enum class RootKey {
    kCurrent, ///< SOFTWARE\UnitWarden\CurrentVersion
    kOlder,   ///< SOFTWARE\VANTORO_QRX\CurrentVersion; read only if kCurrent cannot be opened
};

/// The value "Pathname" of a key. Errors are Windows error numbers, 0 for success.
struct RegisteredPathname {
    std::uint32_t openError = 0;  ///< of opening the key
    std::uint32_t valueError = 0; ///< of reading the value
    std::string pathname;         ///< ANSI code page; empty after an error
};

/// Returns the name of a key, with "HKLM\" in front, as an operator types it.
[[nodiscard]] std::string NameOf(RootKey key);

/// Reads "Pathname" of one key, up to the first zero. A value longer than 255 bytes is an error.
[[nodiscard]] RegisteredPathname ReadPathname(RootKey key);

/// Finds the root folder of the installation.
/// @param path  receives the root in the ANSI code page; "D:\FIRMWARE" if false is returned
/// @return false if neither key can be opened, or if the opened key has no value
[[nodiscard]] bool TryGetFirmwareRoot(std::string& path);

/// Finds the root folder of the installation as TryGetFirmwareRoot does.
/// @throws std::runtime_error "could not get firmware root path" where that returns false
void GetFirmwareRoot(std::string& path);

} // namespace vqrx::system::installation::v1
