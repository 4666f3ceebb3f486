#pragma once

#include <string>

namespace CLI {
class App;
} // namespace CLI

namespace vqrx::client::v0 {

// Each script completes the commands of the program, their options, and the values of an option
// that has a fixed set of values. The script is made from the definition of the command line in
// app. Where a command takes the id of a daemon, the script asks the program for the ids
// (kDaemonIdsWord in Commands.h).

/// Returns a script that bash runs with `source`.
[[nodiscard]] std::string BashCompletion(const CLI::App& app);

/// Returns a script for PowerShell.
[[nodiscard]] std::string PowerShellCompletion(const CLI::App& app);

} // namespace vqrx::client::v0
