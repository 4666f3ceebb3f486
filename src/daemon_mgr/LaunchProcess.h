#pragma once

#include "win32/UniqueHandle.h"

#include <string>
#include <vector>

namespace vqrx::system::daemon::daemon_mgr::v0 {

/// Starts a program in a new console. The process inherits the supervisor's working folder and
/// environment, but no handles.
/// @return the process handle, with full access; empty if Windows refused to start the program
/// @throws std::bad_alloc
[[nodiscard]] win32::v1::UniqueKernelHandle
LaunchProcess(const std::string& executablePath, const std::vector<std::string>& arguments);

} // namespace vqrx::system::daemon::daemon_mgr::v0
