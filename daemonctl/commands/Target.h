#pragma once

#include <CLI/CLI.hpp>

namespace vqrx::client::v0 {

/// Makes the check of an option that names daemons: a daemon id, or the file name of a program.
[[nodiscard]] CLI::Validator Target();

} // namespace vqrx::client::v0
