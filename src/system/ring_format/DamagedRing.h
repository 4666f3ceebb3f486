#pragma once

#include <array>
#include <string>

namespace vqrx::system::ring_format::v1 {

/// Returns the names under which the supervisor keeps a ring file that it could not read. It uses
/// the second name only if something stands in the way of the first.
/// @param ringFile  path of the ring file, in any encoding; the results have the same encoding
[[nodiscard]] inline std::array<std::string, 2> DamagedRingsOf(const std::string& ringFile)
{
    return {ringFile + ".damaged", ringFile + ".damaged2"};
}

} // namespace vqrx::system::ring_format::v1
