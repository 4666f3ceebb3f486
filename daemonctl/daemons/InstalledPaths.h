#pragma once

#include <stdexcept>
#include <string>

namespace vqrx::client::v0 {

/// Thrown if the registry does not name the firmware root; what() says what to do.
class FirmwareRootUnknown : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// Paths of the installation on this machine, found as the supervisor finds them. UTF-8.

/// Returns the supervisor's log file.
/// @throws FirmwareRootUnknown if the registry does not name the firmware root
[[nodiscard]] std::string DefaultLogPath();

/// Returns the guard's log file.
/// @throws FirmwareRootUnknown if the registry does not name the firmware root
[[nodiscard]] std::string DefaultGuardLogPath();

/// Returns the file that a program keeps open while it hands daemons over or applies a fleet file.
/// @throws FirmwareRootUnknown if the registry does not name the firmware root
[[nodiscard]] std::string HandOverLockPath();

/// Returns the folder in which the supervisor runs.
/// @throws FirmwareRootUnknown if the registry does not name the firmware root
[[nodiscard]] std::string DefaultAppFolder();

/// Returns the fleet file that is applied at power-on if no other one is named.
/// @throws FirmwareRootUnknown if the registry does not name the firmware root
[[nodiscard]] std::string DefaultFleetPath();

} // namespace vqrx::client::v0
