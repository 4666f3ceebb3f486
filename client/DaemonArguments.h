#pragma once

#include <string>
#include <vector>

namespace vqrx::client::v0 {

/// What stands behind PATH (launch) or PID (attach) belongs to the daemon, dashes and all, "--"
/// itself included: puts another "--" in front of it.
/// @param arguments  the program name first
std::vector<std::string> ProtectDaemonArguments(std::vector<std::string> arguments);

} // namespace vqrx::client::v0
