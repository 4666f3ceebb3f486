#pragma once

#include <string>
#include <vector>

namespace CLI {
class App;
class Error;
} // namespace CLI

namespace vqrx::client::v0 {

/// Returns the names of a program's commands.
[[nodiscard]] std::vector<std::string> CommandNames(const CLI::App& app);

/// Returns the message for a command line that cannot be parsed, for CLI::App::failure_message. The
/// message says which part is wrong and which command to type next. For a word that other programs
/// use, such as "kill", it names our command for the same job. For a mistyped command it names the
/// most similar command.
[[nodiscard]] std::string UsageError(const CLI::App* app, const CLI::Error& error);

} // namespace vqrx::client::v0
