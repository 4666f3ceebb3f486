#pragma once

#include <optional>
#include <string>
#include <vector>

namespace vqrx::client::v0 {

/// The name of the guard's service, and of its value in the machine's Run key.
inline constexpr const wchar_t* kGuardName = L"DaemonGuard";

/// The file name of the guard's program.
inline constexpr const wchar_t* kGuardProgram = L"DaemonGuard.exe";

/// How the guard runs.
enum class GuardMode {
    kService, ///< started by the service control manager
    kSession  ///< started in the desktop session of a user
};

/// The command line of the guard: "DaemonGuard.exe --service --fleet C:\FW\App\fleet.txt".
struct GuardArguments {
    GuardMode mode = GuardMode::kSession;
    std::string fleet; ///< path of the fleet file, UTF-8; empty: the default, if it exists
    /// A guard with the rights of an administrator believes a log and a fleet file that others may
    /// change.
    bool trust = false;

    bool operator==(const GuardArguments&) const = default;
};

/// A command line that starts the guard.
struct GuardCommand {
    std::string program; ///< full path of DaemonGuard.exe, UTF-8
    GuardArguments arguments;

    bool operator==(const GuardCommand&) const = default;
};

/// Reads the arguments of the guard. Pure.
/// @param arguments  UTF-8, without the name of the program
/// @return nothing if the arguments are wrong
[[nodiscard]] std::optional<GuardArguments>
ParseGuardArguments(const std::vector<std::string>& arguments);

/// Writes the command line that starts the guard, with its paths in double quotes. Pure.
[[nodiscard]] std::string CommandLineOf(const GuardCommand& command);

/// Reads a command line that CommandLineOf() wrote, or that a person changed. Pure.
/// @return nothing if it does not start a guard
[[nodiscard]] std::optional<GuardCommand> ParseGuardCommand(const std::string& commandLine);

} // namespace vqrx::client::v0
