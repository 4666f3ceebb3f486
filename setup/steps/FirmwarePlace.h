#pragma once

#include <string>

namespace vqrx::setup::v0 {

/// Where the firmware lies. Paths are UTF-8.
struct FirmwarePlace {
    std::string root;         ///< the firmware root; not empty
    bool isRegistered = true; ///< false: no registry value names the root yet
};

/// Looks for the firmware root in the registry, as the supervisor does; then takes the root that
/// was asked for, or the default.
/// @param wantedRoot  empty: none was asked for
/// @throws SetupError if a registered value cannot be read or names no folder
[[nodiscard]] FirmwarePlace FindFirmwarePlace(const std::string& wantedRoot);

/// Registers the root, and notes for the uninstaller which keys did not exist before.
/// @throws SetupError
void RegisterFirmwareRoot(const std::string& root);

/// Removes what RegisterFirmwareRoot() made, unless somebody has changed the value since.
void RemoveRegisteredRoot();

} // namespace vqrx::setup::v0
