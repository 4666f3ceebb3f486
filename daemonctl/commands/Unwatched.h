#pragma once

namespace vqrx::client::v0 {

/// Prints the daemons of former supervisors that still run while no supervisor runs, one per line.
/// Prints nothing if there are none, or if the log cannot be read.
void PrintUnwatched();

} // namespace vqrx::client::v0
