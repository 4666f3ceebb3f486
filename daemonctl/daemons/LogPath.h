#pragma once

#include <string>

namespace vqrx::client::v0 {

/// Where the supervisor of this machine writes its log, UTF-8; found as the supervisor finds it.
/// @throws std::runtime_error when the registry does not tell
std::string DefaultLogPath();

} // namespace vqrx::client::v0
