#pragma once

#include <CLI/CLI.hpp>

#include <functional>
#include <string>
#include <vector>

namespace vqrx::client::v0 {

/// @file
/// Each function adds one command to the command line. When the operator chooses the command, the
/// command runs and stores the exit code of the program in exitCode, which must outlive app.

/// Returns the path of this machine's log file, UTF-8. Throws std::runtime_error if the path cannot
/// be found.
using LogPath = std::function<std::string()>;

/// Adds launch, stop, attach, detach and exit.
/// @param daemonArguments  the arguments that launch and attach pass on to the daemon; app does not
///                         parse them, it only shows them in the help
void AddControlCommands(CLI::App& app, int& exitCode,
                        const std::vector<std::string>& daemonArguments);

void AddPsCommand(CLI::App& app, int& exitCode);
void AddWaitCommand(CLI::App& app, int& exitCode);
void AddCheckCommand(CLI::App& app, int& exitCode);
void AddReattachCommand(CLI::App& app, int& exitCode);
void AddDoctorCommand(CLI::App& app, int& exitCode);

/// @param path  empty: the operator must name the log file
void AddLogCommand(CLI::App& app, int& exitCode, const LogPath& path);

/// @param path  empty: the operator must name the log file
void AddReportCommand(CLI::App& app, int& exitCode, const LogPath& path);

/// Adds completion. Its scripts complete the commands that app has when the command runs.
void AddCompletionCommand(CLI::App& app, int& exitCode);

} // namespace vqrx::client::v0
