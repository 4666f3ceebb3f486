#pragma once

#include <CLI/CLI.hpp>

#include <string>

namespace vqrx::client::v0 {

/// Returns the message for a command line that cannot be parsed, for CLI::App::failure_message: what is
/// wrong, and the command to type next. For a word that other programs use, such as "kill", it names
/// the command that does this here; for a mistyped command, the most similar one.
[[nodiscard]] std::string UsageError(const CLI::App* app, const CLI::Error& error);

} // namespace vqrx::client::v0
