#pragma once

#include <CLI/CLI.hpp>

namespace vqrx::client::v0 {

/// Adds ps, wait and check, which tell of the running supervisor's daemons from its log and from
/// the processes. Each sets exitCode when it is chosen.
void AddPsCommand(CLI::App& app, int& exitCode);
void AddWaitCommand(CLI::App& app, int& exitCode);
void AddCheckCommand(CLI::App& app, int& exitCode);

} // namespace vqrx::client::v0
