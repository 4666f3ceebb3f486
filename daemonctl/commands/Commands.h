#pragma once

#include "CommandDefinition.h"
#include "ReportModel.h"

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace vqrx::client::v0 {

// Each function adds commands to the command line. When the operator chooses a command, it runs and
// stores the exit code of the program in exitCode, which must outlive app.

/// Returns the path of this machine's log file, UTF-8. Throws std::runtime_error if the path cannot
/// be found.
using LogPath = std::function<std::string()>;

/// Finds out whether the supervisor of this machine runs and answers.
using SupervisorNow = std::function<SupervisorState()>;

/// Finds the daemons of this machine's supervisor in the timeline of its log. Throws
/// std::runtime_error if that is not possible.
using DaemonsOfLog = std::function<std::vector<DaemonStatus>(const Timeline&)>;

/// Looks at the child processes of this machine's supervisor and returns a function that takes the
/// timeline of a log that was read after this look. Throws std::runtime_error if Windows does not
/// list the processes.
using DaemonsLook = std::function<DaemonsOfLog()>;

/// Returns whether the command `record` may write into a folder, UTF-8; prints the reason if not.
using FolderTrust = std::function<bool(const std::string& folder)>;

/// Adds launch, attach and detach.
/// @param daemonArguments  the arguments that launch and attach pass on to the daemon; app does not
///                         parse them, it only shows them in the help
void AddControlCommands(const CommandDefinition& app, int& exitCode,
                        const std::vector<std::string>& daemonArguments);

/// Adds stop, which ends daemons.
void AddStopCommand(const CommandDefinition& app, int& exitCode);

/// Adds restart, which ends the processes of daemons so that the supervisor starts them again.
void AddRestartCommand(const CommandDefinition& app, int& exitCode);

/// Adds exit, which ends the supervisor.
void AddExitCommand(const CommandDefinition& app, int& exitCode);

/// Adds ps, which lists the daemons and their processes.
void AddPsCommand(const CommandDefinition& app, int& exitCode);

/// Adds wait, which returns when a daemon reaches a state.
void AddWaitCommand(const CommandDefinition& app, int& exitCode);

/// Adds check, which compares the running daemons with a list of programs.
void AddCheckCommand(const CommandDefinition& app, int& exitCode);

/// Adds apply, which launches what a fleet file names.
void AddApplyCommand(const CommandDefinition& app, int& exitCode);

/// Adds reattach, which attaches the daemons of the former supervisor.
void AddReattachCommand(const CommandDefinition& app, int& exitCode);

/// Adds doctor, which checks everything on the machine that the supervisor needs.
void AddDoctorCommand(const CommandDefinition& app, int& exitCode);

/// Adds autostart, which lets Windows start the guard, and with it the supervisor.
void AddAutostartCommand(const CommandDefinition& app, int& exitCode);

/// Adds metrics, which writes figures about supervisor and daemons for a monitoring system.
void AddMetricsCommand(const CommandDefinition& app, int& exitCode);

/// Adds rights, which shows who may change a path, and makes protected folders.
void AddRightsCommand(const CommandDefinition& app, int& exitCode);

/// Adds log, which prints records of the log.
/// @param path  empty: the operator must name the log file
void AddLogCommand(const CommandDefinition& app, int& exitCode, const LogPath& path);

/// Adds report, which writes a page about the history of the daemons.
/// @param path        empty: the operator must name the log file
/// @param supervisor  asked if the page is about this machine's log; empty: nobody is asked
/// @param daemons     asked if that supervisor runs; empty: the daemons are as the log shows them
void AddReportCommand(const CommandDefinition& app, int& exitCode, const LogPath& path,
                      const SupervisorNow& supervisor = {}, const DaemonsLook& daemons = {});

/// Adds record, which records the log into a folder of files.
/// @param path   empty: the operator must name the log file
/// @param trust  asked once, unless the operator gives --trust; empty: every folder is accepted
void AddRecordCommand(const CommandDefinition& app, int& exitCode, const LogPath& path,
                      const FolderTrust& trust = {});

/// Adds watch, which calls a program when there is trouble.
void AddWatchCommand(const CommandDefinition& app, int& exitCode);

/// Adds completion. Its scripts complete the commands that app has when the command runs.
void AddCompletionCommand(CLI::App& app, int& exitCode);

/// The word in place of a command with which the scripts of completion ask for the daemons.
constexpr std::string_view kDaemonIdsWord = "--daemon-ids";

/// Prints the ids of the daemons for the scripts of completion: see DaemonIdLines(). Reads the log
/// and the list of processes. Does not ask the supervisor, whose answer takes too long for an
/// operator who completes a word. Prints nothing if no supervisor runs or its log cannot be read.
/// @param prefix  only ids that begin with these characters
/// @return the exit code
[[nodiscard]] int PrintDaemonIds(std::string_view prefix);

} // namespace vqrx::client::v0
