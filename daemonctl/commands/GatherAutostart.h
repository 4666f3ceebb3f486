#pragma once

#include "AutostartChecks.h"

namespace vqrx::client::v0 {

/// Asks Windows how the guard is started, and reads its fleet file as the guard does. Changes
/// nothing.
/// @throws std::bad_alloc
[[nodiscard]] AutostartFacts GatherAutostartFacts();

/// Reads a fleet file and compares it with this machine: sets `fleet` and the members after it.
/// @param path  UTF-8
/// @throws std::runtime_error if the registry does not name the firmware root
void ReadFleetFacts(const std::string& path, AutostartFacts& facts);

} // namespace vqrx::client::v0
