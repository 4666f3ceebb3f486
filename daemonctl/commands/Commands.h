#pragma once

#include "ReportModel.h"

#include <CLI/CLI.hpp>

#include <functional>
#include <string>
#include <vector>

namespace vqrx::client::v0 {

// Each function adds commands to the command line. When the operator chooses a command, it runs and
// stores the exit code of the program in exitCode, which must outlive app.

/// Returns the path of this machine's log file, UTF-8. Throws std::runtime_error if the path cannot
/// be found.
using LogPath = std::function<std::string()>;

/// Returns whether the supervisor of this machine runs.
using SupervisorNow = std::function<SupervisorState()>;

/// Adds launch, attach and detach.
/// @param daemonArguments  the arguments that launch and attach pass on to the daemon; app does not
///                         parse them, it only shows them in the help
void AddControlCommands(CLI::App& app, int& exitCode,
                        const std::vector<std::string>& daemonArguments);

/// Adds stop, which ends daemons.
void AddStopCommand(CLI::App& app, int& exitCode);

/// Adds restart, which ends the processes of daemons so that the supervisor starts them again.
void AddRestartCommand(CLI::App& app, int& exitCode);

/// Adds exit, which ends the supervisor.
void AddExitCommand(CLI::App& app, int& exitCode);

/// Adds ps, which lists the daemons and their processes.
void AddPsCommand(CLI::App& app, int& exitCode);

/// Adds wait, which returns when a daemon reaches a state.
void AddWaitCommand(CLI::App& app, int& exitCode);

/// Adds check, which compares the running daemons with a list of programs.
void AddCheckCommand(CLI::App& app, int& exitCode);

/// Adds apply, which makes the daemons those of a fleet file.
void AddApplyCommand(CLI::App& app, int& exitCode);

/// Adds reattach, which attaches the daemons of the former supervisor.
void AddReattachCommand(CLI::App& app, int& exitCode);

/// Adds doctor, which checks everything on the machine that the supervisor needs.
void AddDoctorCommand(CLI::App& app, int& exitCode);

/// Adds autostart, which lets Windows start the guard, and with it the supervisor.
void AddAutostartCommand(CLI::App& app, int& exitCode);

/// Adds metrics, which writes figures about supervisor and daemons for a monitoring system.
void AddMetricsCommand(CLI::App& app, int& exitCode);

/// Adds rights, which shows who may change a path, and makes protected folders.
void AddRightsCommand(CLI::App& app, int& exitCode);

/// Adds log, which prints records of the log.
/// @param path  empty: the operator must name the log file
void AddLogCommand(CLI::App& app, int& exitCode, const LogPath& path);

/// Adds report, which writes a page about the history of the daemons.
/// @param path        empty: the operator must name the log file
/// @param supervisor  asked if the page is about this machine's log; empty: nobody is asked
void AddReportCommand(CLI::App& app, int& exitCode, const LogPath& path,
                      const SupervisorNow& supervisor = {});

/// Adds record, which records the log into a folder of files.
/// @param path  empty: the operator must name the log file
void AddRecordCommand(CLI::App& app, int& exitCode, const LogPath& path);

/// Adds watch, which calls a program when there is trouble.
void AddWatchCommand(CLI::App& app, int& exitCode);

/// Adds completion. Its scripts complete the commands that app has when the command runs.
void AddCompletionCommand(CLI::App& app, int& exitCode);

} // namespace vqrx::client::v0
