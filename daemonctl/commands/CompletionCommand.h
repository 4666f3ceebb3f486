#pragma once

#include <CLI/CLI.hpp>

namespace vqrx::client::v0 {

/// Adds completion, which knows every command of app when it is chosen, and sets exitCode.
void AddCompletionCommand(CLI::App& app, int& exitCode);

} // namespace vqrx::client::v0
