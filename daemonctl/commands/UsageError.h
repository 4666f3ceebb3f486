#pragma once

#include <CLI/CLI.hpp>

#include <string>

namespace vqrx::client::v0 {

/// Returns the message for a command line that cannot be parsed, for CLI::App::failure_message.
[[nodiscard]] std::string UsageError(const CLI::App* app, const CLI::Error& error);

} // namespace vqrx::client::v0
