#pragma once

#include <CLI/CLI.hpp>

namespace vqrx::client::v0 {

/// Adds reattach, which sets exitCode when it is chosen.
void AddReattachCommand(CLI::App& app, int& exitCode);

} // namespace vqrx::client::v0
