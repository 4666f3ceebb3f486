#pragma once

#include "SetupOptions.h"

#include <string>
#include <vector>

namespace vqrx::setup::v0 {

/// Returns the arguments of "daemonctl autostart" that carry out /AUTOSTART=. The option names
/// neither the fleet file nor whether the guard trusts, so a guard that is set up keeps both. Pure.
/// @param options      options.autostart is not empty
/// @param formerFleet  the fleet file that the present entry names, UTF-8; empty: none
/// @param formerTrust  whether the present entry has --trust
[[nodiscard]] std::vector<std::string>
AutostartArguments(const SetupOptions& options, const std::string& formerFleet, bool formerTrust);

} // namespace vqrx::setup::v0
