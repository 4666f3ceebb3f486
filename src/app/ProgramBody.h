#pragma once

namespace vqrx::app::v0 {

/// The supervisor from start to end, on the main thread: finds the installation, builds the logger,
/// joins COM, makes and publishes the manager, and pumps messages until WM_QUIT.
/// @return the exit code: 0, or 1 after a failure, which is printed on standard error
int RunProgram();

} // namespace vqrx::app::v0
