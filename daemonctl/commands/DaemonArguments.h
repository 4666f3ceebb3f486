#pragma once

#include <string>
#include <vector>

namespace vqrx::client::v0 {

/// A command line, taken apart.
struct CommandLine {
    std::vector<std::string> ours;    ///< the program name first, up to PATH or PID
    std::vector<std::string> daemons; ///< what stands behind them, untouched

    bool operator==(const CommandLine&) const = default;
};

/// What stands behind PATH (launch) or PID (attach) belongs to the daemon, whatever it is: our own
/// parser, to which dashes and brackets mean something, must not see it.
/// @param arguments  the program name first
CommandLine SplitCommandLine(std::vector<std::string> arguments);

} // namespace vqrx::client::v0
