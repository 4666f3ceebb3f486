#pragma once

#include "Timeline.h"

namespace vqrx::client::v0 {

/// Prints the daemons of former supervisors that still run while no supervisor runs, one per line.
/// Prints nothing if there are none, or if the log cannot be read.
void PrintUnwatched();

/// Prints how many programs of former supervisors run on without a supervisor, although one runs
/// now, and what to do. Prints nothing if there are none, or if they cannot be looked for.
/// @param timeline  of the log, which shows the running supervisor
void PrintUnwatchedOf(const Timeline& timeline);

} // namespace vqrx::client::v0
