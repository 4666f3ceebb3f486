#pragma once

#include <windows.h>

#include <string>

namespace vqrx::setup::v0 {

/// For the guard to end by itself after its supervisor has ended on an order: it first ends a
/// hand-over that is under way. Milliseconds.
inline constexpr DWORD kGuardEndMs = 20000;

/// Waits until the guards of an installation have ended, and ends those that run on: a service by
/// the service manager, so that the manager does not start it again; a guard of a session by
/// termination. A supervisor and its daemons run on after a termination; after the stop of the
/// service the daemons run on.
/// @param folder      folder of the programs, UTF-8
/// @param patienceMs  milliseconds that the guards have to end by themselves
/// @return whether one had to be ended; it may have started a supervisor just before
/// @throws SetupError if a guard runs on
[[nodiscard]] bool EndGuards(const std::string& folder, DWORD patienceMs);

} // namespace vqrx::setup::v0
