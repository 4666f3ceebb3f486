#pragma once

#include "Autostart.h"

#include <optional>
#include <string>

namespace vqrx::client::v0 {

// The guard's entry in the database of the service control manager.

/// Returns the service's entry; nothing if there is none.
/// @throws std::runtime_error if the entry cannot be read
[[nodiscard]] std::optional<AutostartEntry> ReadGuardService();

/// Makes the service, or changes the one that exists, see InstallAutostart().
/// @param commandLine  UTF-8
/// @throws std::runtime_error with the reason
void MakeGuardService(const std::string& commandLine);

/// Deletes the service. If it runs, Windows deletes it when it ends.
/// @return whether there was one that was not marked for deletion yet
/// @throws std::runtime_error with the reason
bool RemoveGuardService();

/// Starts the service unless it runs already. Does not wait.
/// @throws std::runtime_error with the reason
GuardStart StartGuardService();

} // namespace vqrx::client::v0
