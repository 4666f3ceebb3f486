#pragma once

#include <string>
#include <string_view>

namespace vqrx::setup::v0 {

/// Returns the SHA-256 of the bytes as 64 hexadecimal digits in lower case. Pure. Windows' own
/// function is in a library that Windows would look for beside the installer first.
[[nodiscard]] std::string Sha256(std::string_view bytes);

} // namespace vqrx::setup::v0
