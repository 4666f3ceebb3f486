#pragma once

#include "Options.h"

namespace vqrx::kit {

/// Runs the kit in whose folder this program is: puts back what an earlier run has left, shows the
/// machine, asks, runs the programs, puts everything back and writes the reports. Speaks with the
/// person over the console.
/// @return exit code, see HelpText()
/// @throws std::runtime_error  with the reason for which nothing was run; UsageError
[[nodiscard]] int RunKit(const Options& options);

/// Waits for the Enter key if this program has a console window of its own, which closes when the
/// program ends: somebody has started it with a double-click.
void WaitForKeyOfOwnConsole();

} // namespace vqrx::kit
