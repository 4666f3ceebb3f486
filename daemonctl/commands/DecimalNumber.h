#pragma once

#include <CLI/CLI.hpp>

namespace vqrx::client::v0 {

/// Returns a transformation for an option with an unsigned number, for CLI::Option::transform. It
/// accepts decimal digits and removes leading zeros. Without it the library reads 010 as 8 and 0x10
/// as 16.
[[nodiscard]] CLI::Validator DecimalNumber();

} // namespace vqrx::client::v0
