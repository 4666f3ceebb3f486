#pragma once

#include "GuardArguments.h"

namespace vqrx::client::v0 {

/// Prints on standard error what will keep a guard that was just set up from doing its work after
/// the next power-on, and who else than administrators could make it do something else:
/// - whoever may change the programs that a service starts;
/// - whoever may change the log and the fleet file that the guard believes;
/// - a session without automatic logon, or whose account may not write to \Logs.
/// @throws std::runtime_error if the registry does not name the firmware root
void WarnOfAutostart(const GuardCommand& command);

} // namespace vqrx::client::v0
