#pragma once

#include <CLI/CLI.hpp>

namespace vqrx::client::v0 {

/// Adds doctor, which sets exitCode when it is chosen.
void AddDoctorCommand(CLI::App& app, int& exitCode);

} // namespace vqrx::client::v0
