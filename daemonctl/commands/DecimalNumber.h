#pragma once

#include <CLI/CLI.hpp>

namespace vqrx::client::v0 {

/// For the unsigned numbers of a command line, with CLI::Option::transform: they are decimal,
/// leading zeros or not. The library itself takes 010 for 8 and 0x10 for 16.
CLI::Validator DecimalNumber();

} // namespace vqrx::client::v0
