#pragma once

namespace vqrx::app::v0 {

/// Runs the supervisor from start to end, on the main thread: finds the installation, makes the
/// logger, joins COM, makes and publishes the manager, and then waits for WM_QUIT. ProgramBody.cpp
/// lists the steps of the shutdown.
/// @return the exit code: 0; or 1 after an exception, which it prints on standard error. If the
///         shutdown has to be given up, the process ends with ForcedEnd::kExitCode instead of 0
[[nodiscard]] int RunProgram();

} // namespace vqrx::app::v0
