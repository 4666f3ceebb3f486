#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace vqrx::client::v0 {

/// Returns whether a Windows service of this name exists.
/// @param name  key name, not the display name; UTF-8
/// @throws std::runtime_error with the Windows error if Windows does not answer, for example
///         because this user may not ask
[[nodiscard]] bool ServiceExists(const std::string& name);

/// Returns whether the service control manager runs a process for a Windows service. A program that
/// the supervisor started for a service is no such process.
/// @param name  as for ServiceExists()
/// @return true also if Windows does not answer; false if there is no such service
[[nodiscard]] bool MayBeProcessOfService(const std::string& name, std::uint32_t processId);

/// Finds the process of a Windows service. If the service is stopped, or stops at this moment,
/// starts it and waits at most 30 s until it runs.
/// @param arguments  for the start; UTF-8
/// @return the process id
/// @throws std::runtime_error with the reason, if the service has no process
[[nodiscard]] std::uint32_t RunService(const std::string& name,
                                       const std::vector<std::string>& arguments);

} // namespace vqrx::client::v0
