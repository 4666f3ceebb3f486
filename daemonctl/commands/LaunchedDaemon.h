#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace vqrx::client::v0 {

/// Finds out what speaks against starting a program by this path on this machine.
/// @param path  UTF-8
/// @return as WarningsAboutPath()
[[nodiscard]] std::vector<std::string> WarningsAboutProgram(const std::string& path);

/// Prints warnings about a program that was given to the supervisor, on standard error: the path is
/// relative, or no file is there. The supervisor accepts any path and tries it every second.
/// @param path      UTF-8
/// @param daemonId  of the program; the warnings name the command that stops it
void WarnAboutProgram(const std::string& path, std::uint32_t daemonId);

/// Waits until a daemon has run for two seconds, or until the limit, and prints on standard output
/// or standard error whether it runs then. A program that ends at once does not count as running.
/// @param seconds  the limit
/// @return kDone: it runs; kNothingToDo: it does not; kNoSupervisor: the supervisor has ended
/// @throws LogUnreadable
[[nodiscard]] int WaitUntilItRuns(std::uint32_t daemonId, std::uint32_t seconds);

/// Prints a warning on standard error if a process that was just attached belonged to another
/// daemon already. Prints nothing if the log cannot be read.
/// @param daemonId  the daemon that the attach made
void WarnAboutSecondAttach(std::uint32_t processId, std::uint32_t daemonId);

} // namespace vqrx::client::v0
