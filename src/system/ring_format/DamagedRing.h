#pragma once

#include <string>

namespace vqrx::system::ring_format::v1 {

/// Returns the name under which the supervisor keeps a ring file that it could not read.
/// @param ringFile  path of the ring file, in any encoding; the result has the same encoding
[[nodiscard]] inline std::string DamagedRingOf(const std::string& ringFile)
{
    return ringFile + ".damaged";
}

} // namespace vqrx::system::ring_format::v1
