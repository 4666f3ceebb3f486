#pragma once

#include <string>

namespace vqrx::client::v0 {

/// Checks the value of an option that names daemons: a daemon id, or the file name of a program.
/// @return an error message; empty if the text names a daemon
[[nodiscard]] std::string CheckTarget(const std::string& text);

} // namespace vqrx::client::v0
