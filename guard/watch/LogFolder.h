#pragma once

#include "GuardArguments.h"

#include <string>

namespace vqrx::guard::v0 {

/// Makes the folder of the logs unless it exists. The guard believes the supervisor's log, and
/// writes a log, a lock and dumps there. So a guard with the rights of an administrator lets nobody
/// else in than the account of its supervisor: SYSTEM for a service; in a session also the account
/// that the installer noted. A service that let this account in would not believe its own
/// supervisor's log. If the folder cannot be made, that shows when the guard opens its lock in it.
/// @param folder  in the ANSI code page
/// @throws std::bad_alloc
void MakeLogFolder(const std::string& folder, client::v0::GuardMode mode);

} // namespace vqrx::guard::v0
