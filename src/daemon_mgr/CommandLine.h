#pragma once

#include <string>
#include <vector>

namespace vqrx::system::daemon::daemon_mgr::v0 {

/// Assembles the command line of a launch: path and arguments, each followed by one space, those
/// that contain a space between double quotes. Quotes inside are not escaped, tabs and empty
/// arguments get none: whoever passes arguments on has to know that.
std::string BuildCommandLine(const std::string& executablePath,
                             const std::vector<std::string>& arguments);

} // namespace vqrx::system::daemon::daemon_mgr::v0
