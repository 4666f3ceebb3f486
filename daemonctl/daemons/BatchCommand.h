#pragma once

#include "DaemonStatus.h"

#include <optional>
#include <string>

namespace vqrx::client::v0 {

/// Returns the command of the batch file that a command interpreter runs. The supervisor registers
/// the process of a batch file under the interpreter's command when it attaches that process:
/// "C:\windows\system32\cmd.exe /s/c C:\FW\run.bat 1  " gives "C:\FW\run.bat 1 ". Pure.
/// @param command  as DaemonStatus::command
/// @return nothing if the command does not run a batch file in an interpreter
[[nodiscard]] std::optional<std::string> BatchCommandOf(const std::string& command);

/// Returns the command with which a client would launch a daemon: for an attached batch file that
/// of the file, for any other daemon its own. Pure.
[[nodiscard]] std::string LaunchCommandOf(const DaemonStatus& daemon);

} // namespace vqrx::client::v0
