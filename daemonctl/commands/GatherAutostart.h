#pragma once

#include "AutostartChecks.h"

#include <string>
#include <vector>

namespace vqrx::client::v0 {

/// Asks Windows how the guard is started, and reads its fleet file as the guard does. Changes
/// nothing.
/// @throws std::bad_alloc
[[nodiscard]] AutostartFacts GatherAutostartFacts();

/// Reads a fleet file and compares it with this machine: sets `fleet` and the members after it.
/// @param path  UTF-8
/// @throws std::runtime_error if the registry does not name the firmware root
void ReadFleetFacts(const std::string& path, AutostartFacts& facts);

/// Returns the folder of the supervisor's log, UTF-8.
/// @throws FirmwareRootUnknown if the registry does not name the firmware root
[[nodiscard]] std::string LogFolderPath();

/// Returns why a guard of this kind will not believe a log or a fleet file at its next start. A
/// service believes what only administrators may change: its supervisor runs as SYSTEM. The account
/// of a supervisor that runs now, which a person may have started, does not count there. A guard of
/// a session also believes the account of its supervisor.
/// @param path  UTF-8
/// @return as WeaknessesOfPath()
[[nodiscard]] std::vector<std::string> WeaknessesForGuard(const std::string& path, GuardMode mode);

} // namespace vqrx::client::v0
