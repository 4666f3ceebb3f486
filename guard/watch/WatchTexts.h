#pragma once

#include "SupervisorProgram.h"

#include <cstdint>
#include <string>

namespace vqrx::guard::v0 {

// Parts of the records that the guard's watch writes.

/// Returns an exit code as "0xc0000005".
[[nodiscard]] std::string HexText(std::uint32_t code);

/// Returns a time as whole seconds, rounded down: "12 s".
[[nodiscard]] std::string SecondsText(std::uint64_t milliseconds);

/// Explains why a supervisor that runs is not published: for example, because it runs in another
/// session.
/// @param detail  what the check of the supervisor has found; may be empty
[[nodiscard]] std::string WhyUnpublished(const SupervisorProgram& supervisor,
                                         const std::string& detail);

} // namespace vqrx::guard::v0
