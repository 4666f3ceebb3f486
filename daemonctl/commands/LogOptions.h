#pragma once

#include "Commands.h"
#include "LineOutput.h"
#include "RingScan.h"
#include "TextEncoding.h"

#include <functional>
#include <string>

namespace vqrx::client::v0 {

/// The log file that a command reads, and its encoding.
struct LogOptions {
    std::string program; ///< name for error messages: daemonctl or daemonctl-log
    std::string file;    ///< UTF-8; empty: the log file of this machine
    TextEncoding encoding = TextEncoding::kAuto;
};

/// Adds --file and --encoding to a command, and stores the name of its program.
/// @param options     must outlive command
/// @param hasDefault  whether the operator may leave --file out
void AddLogOptions(const CommandDefinition& command, LogOptions& options, bool hasDefault);

/// Adds --color to a command.
/// @param colour  must outlive command
void AddColourOption(const CommandDefinition& command, LineOutput::Colour& colour);

/// Finds the log file and runs a function that reads it. A failure is printed on standard error,
/// with the next step.
/// @param defaultPath  called if the options name no file
/// @param read         gets the path of the file, UTF-8
/// @param failure      if not null: set to the failure, without the next step
/// @return the exit code of read; kLogUnreadable after a failure
[[nodiscard]] int WithLogFile(const LogOptions& options, const LogPath& defaultPath,
                              const std::function<int(const std::string& path)>& read,
                              std::string* failure = nullptr);

/// Names each damaged log that the supervisor set aside beside this log file, on a line of its own
/// that begins with a line feed and leads to the command that reads it.
/// @return empty if there is none
[[nodiscard]] std::string DescribeLogsSetAside(const LogOptions& options, const std::string& path);

/// Prints an error on standard error, with the name of the program.
void PrintError(const LogOptions& options, const std::string& text);

/// Prints on standard error which damage a scan of the log file found, and the next step.
/// @return kDone if there is no damage, otherwise kLogUnreadable
[[nodiscard]] int ReportDamage(const LogOptions& options, const std::string& path,
                               const ScanSummary& summary);

} // namespace vqrx::client::v0
