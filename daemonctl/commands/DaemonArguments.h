#pragma once

#include <string>
#include <vector>

namespace vqrx::client::v0 {

/// The two parts of a command line.
struct CommandLine {
    std::vector<std::string> ours;    ///< the arguments for this program, the program name first
    std::vector<std::string> daemons; ///< the arguments for the daemon, unchanged

    bool operator==(const CommandLine&) const = default;
};

/// Separates the arguments of a daemon from those of this program. The arguments after the PATH of
/// launch or the PID of attach belong to the daemon. Dashes and brackets have a meaning for the
/// parser of this program, so the parser must not see them. Options before PATH or PID are known to
/// CountOfOption (DaemonArguments.cpp): a new option of launch or attach must be added there. After
/// "--" comes PATH or PID, even if it begins with a dash. If an unknown option stands before PATH
/// or PID, all arguments are this program's: its parser reports the option.
/// @param arguments  the program name first
[[nodiscard]] CommandLine SplitCommandLine(std::vector<std::string> arguments);

/// Turns "help" into the option that the parser knows: "help log" becomes "log --help".
/// @param arguments  the program name first
[[nodiscard]] std::vector<std::string> WithoutHelpCommand(std::vector<std::string> arguments);

} // namespace vqrx::client::v0
