#pragma once

#include "FormerProcess.h"

#include <windows.h>

#include <string>
#include <vector>

namespace vqrx::setup::v0 {

/// How long to wait for the end of a guard whose supervisor has ended on an order, milliseconds.
/// The guard first ends a hand-over that is under way.
inline constexpr DWORD kGuardEndMs = 20000;

/// How long EndGuards() waits. Milliseconds.
struct GuardLimits {
    DWORD patienceMs = 0; ///< for the guards to end by themselves
    /// How long to ask a service that is still starting to stop, until it takes the request.
    DWORD stopRequestMs = 15000;
    DWORD terminationMs = 10000; ///< for the end of a process that was terminated
};

/// Waits until the guards of an installation have ended. Ends the guards that still run after that:
/// - It asks the service manager to stop a guard that is a service, again and again while the
///   service does not take the request. The manager does not start a stopped service again. Such a
///   guard ends its supervisor in order; the daemons run on.
/// - It terminates a guard of a session. The supervisor and the daemons run on.
/// @param folder    folder of the programs, UTF-8
/// @param hasEnded  becomes true before the first attempt to end a guard, so that the caller knows
///                  it also after an exception
/// @return whether one had to be ended; it may have started a supervisor just before
/// @throws SetupError if a guard runs on
[[nodiscard]] bool EndGuards(const std::string& folder, const GuardLimits& limits, bool& hasEnded);

/// Finds the guards of this folder that run and are no service. Every user may run the installed
/// guard, so there may be several.
/// @param folder  folder of the programs, UTF-8
/// @throws SetupError if a guard cannot be opened
[[nodiscard]] std::vector<FormerProcess> FindGuardsOfSessions(const std::string& folder);

/// Stops the service of a guard, if a guard of this folder is one, and waits for its end. Such a
/// guard ends its supervisor in order, also one that programs of this session do not find.
/// @param folder    folder of the programs, UTF-8
/// @param hasEnded  becomes true when a service takes the request
/// @throws SetupError if a guard cannot be opened
void StopGuardService(const std::string& folder, bool& hasEnded);

} // namespace vqrx::setup::v0
