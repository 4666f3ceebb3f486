#pragma once

#include <string>

namespace vqrx::setup::v0 {

/// Returns a name that nobody can foresee: the prefix and 16 hexadecimal digits from Windows'
/// generator for secrets.
/// @throws SetupError if Windows has no random bytes
[[nodiscard]] std::string RandomName(const std::string& prefix);

} // namespace vqrx::setup::v0
