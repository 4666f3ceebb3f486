#pragma once

#include <CLI/CLI.hpp>

#include <string>

namespace vqrx::client::v0 {

/// A script that makes bash complete the program's commands, options and their values, taken from
/// the command line as it is. To be sourced.
std::string BashCompletion(const CLI::App& app);

/// The same for PowerShell.
std::string PowerShellCompletion(const CLI::App& app);

} // namespace vqrx::client::v0
