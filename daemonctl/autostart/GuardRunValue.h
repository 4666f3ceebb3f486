#pragma once

#include <string>

namespace vqrx::client::v0 {

// The guard's value in the machine's Run key. Windows runs its command line when a user logs on.

/// Returns the command line, UTF-8; empty if there is none.
/// @throws std::runtime_error if Windows refuses
[[nodiscard]] std::string ReadGuardRunValue();

/// Writes the command line. @param commandLine  UTF-8
/// @throws std::runtime_error if Windows refuses
void WriteGuardRunValue(const std::string& commandLine);

/// Removes the value. @return whether there was one
/// @throws std::runtime_error if Windows refuses
bool RemoveGuardRunValue();

} // namespace vqrx::client::v0
