#pragma once

#include "commands/LogOptions.h"

#include <CLI/CLI.hpp>

namespace vqrx::client::v0 {

/// Adds "report". Sets exitCode when it is chosen.
/// @param path  empty where there is no default
void AddReportCommand(CLI::App& app, int& exitCode, const LogPath& path);

} // namespace vqrx::client::v0
