#pragma once

#include <CLI/CLI.hpp>

#include <string>
#include <vector>

namespace vqrx::client::v0 {

/// Adds launch, stop, attach, detach and exit. Each sets exitCode when it is chosen.
/// @param daemonArguments  what launch and attach hand on; app only explains them
void AddControlCommands(CLI::App& app, int& exitCode,
                        const std::vector<std::string>& daemonArguments);

} // namespace vqrx::client::v0
