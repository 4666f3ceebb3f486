#pragma once

#include <CLI/CLI.hpp>

namespace vqrx::client::v0 {

/// Adds launch, stop, attach, detach and exit. Each sets exitCode when it is chosen.
void AddControlCommands(CLI::App& app, int& exitCode);

} // namespace vqrx::client::v0
