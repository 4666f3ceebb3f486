#pragma once

#include <windows.h>

namespace vqrx::app::v0 {

/// How the process ends when an orderly end is not possible any more. Returns in tests only.
using ProcessEnd = void (*)(UINT exitCode) noexcept;

/// Ends this process at once. Not as ExitProcess does, which would ask the libraries to clean up,
/// COM's among them.
void EndThisProcess(UINT exitCode) noexcept;

/// The exit code of a process that ends now: 0, or 1 while an exception passes.
UINT ExitCodeOfNow() noexcept;

} // namespace vqrx::app::v0
