#pragma once

#include "GuardArguments.h"

#include <windows.h>

#include <functional>
#include <string>

namespace vqrx::guard::v0 {

/// Runs the guard of this machine until its watch ends: makes its log, refuses to run beside
/// another guard, and watches over the DaemonManager.exe beside this program. On the main thread,
/// or on the thread of the service.
/// @param stop      borrowed: a manual-reset event that ends the watch
/// @param onReady   called when the guard has begun to watch. May be empty
/// @param onEnding  see WatchSettings. May be empty
/// @throws std::runtime_error if the guard cannot run; Windows' event log then has an event, too
void RunGuard(const client::v0::GuardArguments& arguments, HANDLE stop,
              const std::function<void()>& onReady, const std::function<void()>& onEnding);

/// Runs the guard as a service, until the service has ended.
/// @param arguments  of the program
/// @return the exit code of the program: 0, or a Windows error number
[[nodiscard]] int RunAsService(const client::v0::GuardArguments& arguments);

} // namespace vqrx::guard::v0
