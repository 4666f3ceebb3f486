#pragma once

#include <windows.h>

namespace vqrx::app::v0 {

/// Ends the process after an orderly shutdown has become impossible. EndThisProcess does
/// not return. A test passes a function that returns.
using ProcessEnd = void (*)(UINT exitCode) noexcept;

/// Ends this process at once, with TerminateProcess. ExitProcess would call the clean-up code of
/// the libraries, COM among them, which may block.
void EndThisProcess(UINT exitCode) noexcept;

/// The exit code for a process that ends now: 0, or 1 if an exception is passing on this thread.
[[nodiscard]] UINT ExitCodeOfNow() noexcept;

} // namespace vqrx::app::v0
