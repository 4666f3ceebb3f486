#pragma once

#include <CLI/CLI.hpp>

#include <string>

namespace vqrx::client::v0 {

/// What a program says of a command line that it does not understand: for
/// CLI::App::failure_message.
std::string UsageError(const CLI::App* app, const CLI::Error& error);

} // namespace vqrx::client::v0
