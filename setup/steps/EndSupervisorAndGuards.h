#pragma once

#include "SupervisorChange.h"

#include <functional>
#include <string>

namespace vqrx::setup::v0 {

/// Ends the supervisor and the guards, also a guard that waits between two starts, and a supervisor
/// that such a guard started meanwhile.
/// @param change      afterwards the first supervisor that was ended, and its list of the daemons
/// @param folder      folder of the guards' program, UTF-8; empty: there is none
/// @param newListing  returns a path for a list of the daemons, another one for each call
/// @param endedGuard  becomes true when a guard has to be ended, before that is tried; so the
///                    caller knows it after an exception, too
/// @throws SetupError if a supervisor or a guard runs on
void EndSupervisorAndGuards(SupervisorChange& change, const std::string& folder,
                            const std::function<std::string()>& newListing, bool& endedGuard);

} // namespace vqrx::setup::v0
