#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace vqrx::client::v0 {

/// Returns whether a Windows service of this name exists.
/// @param name  key name, not the display name; UTF-8
/// @return false also if this user may not ask
[[nodiscard]] bool ServiceExists(const std::string& name);

/// Finds the process of a Windows service. If the service is stopped, starts it and waits at most
/// 30 s until it runs.
/// @param arguments  for the start; UTF-8
/// @return the process id
/// @throws std::runtime_error with the reason, if the service has no process
[[nodiscard]] std::uint32_t RunService(const std::string& name,
                                       const std::vector<std::string>& arguments);

} // namespace vqrx::client::v0
