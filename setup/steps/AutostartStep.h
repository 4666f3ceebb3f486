#pragma once

#include "Conversation.h"
#include "GuardRestart.h"
#include "SetupOptions.h"
#include "SupervisorChange.h"

#include <string>

namespace vqrx::setup::v0 {

/// Returns the path of the fleet file that the guard uses, UTF-8; empty if no guard is set up, or
/// if Windows does not show its entry. The file need not exist.
[[nodiscard]] std::string FleetOfPresentGuard();

/// Sets up what Windows starts at power-on, as the options say. A guard that is set up keeps its
/// fleet file and its --trust. Without /AUTOSTART, or if the new entry cannot be made, starts
/// again a guard that is set up and ran.
/// @param change      the supervisor that was replaced, if one ran
/// @param guard       starts a guard again
/// @param endedGuard  whether a guard was ended that did not end with the supervisor
/// @return whether that succeeded; the conversation has the reason
/// @throws SetupError if daemonctl cannot be started; std::runtime_error if Windows does not show
///         the present entry
[[nodiscard]] bool SetUpAutostart(const SetupOptions& options, const SupervisorChange& change,
                                  const GuardRestart& guard, bool endedGuard,
                                  Conversation& conversation);

} // namespace vqrx::setup::v0
