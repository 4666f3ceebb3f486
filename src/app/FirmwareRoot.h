#pragma once

#include <string>

namespace vqrx::app::v0 {

/// Reads the installation's root folder from the registry (ANSI code page).
/// @param path  the root; "D:\FIRMWARE" when false is returned
/// @return false when neither key gives a value
bool TryGetFirmwareRoot(std::string& path);

/// The same. @throws std::runtime_error "could not get firmware root path"
void GetFirmwareRoot(std::string& path);

} // namespace vqrx::app::v0
