#pragma once

#include <string>

namespace vqrx::guard::v0 {

/// Makes the folder of the logs unless it exists. A guard with the rights of an administrator lets
/// nobody else in than the account that the installer noted for the supervisor: the guard believes
/// the supervisor's log, and writes a log, a lock and dumps there. If the folder cannot be made,
/// that shows when the guard opens its lock in it.
/// @param folder  in the ANSI code page
/// @throws std::bad_alloc
void MakeLogFolder(const std::string& folder);

} // namespace vqrx::guard::v0
