#pragma once

#include "win32/UniqueHandle.h"

#include <string>
#include <vector>

namespace vqrx::system::daemon::daemon_mgr::v0 {

/// Starts a program in a console of its own, in the supervisor's working folder and environment.
/// @return the process; empty when it could not be started
win32::v1::UniqueKernelHandle LaunchProcess(const std::string& executablePath,
                                            const std::vector<std::string>& arguments);

} // namespace vqrx::system::daemon::daemon_mgr::v0
