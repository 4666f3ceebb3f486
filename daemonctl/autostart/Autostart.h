#pragma once

#include "GuardArguments.h"

#include <string>
#include <vector>

namespace vqrx::client::v0 {

// How Windows starts the guard at power-on: as a service, or from the machine's Run key when a user
// logs on. Changes need the rights of an administrator.

/// One way in which Windows starts the guard.
struct AutostartEntry {
    GuardMode mode = GuardMode::kService;
    std::string commandLine; ///< UTF-8
    bool isAutomatic = true; ///< service: it starts with Windows
    bool isRunning = false;  ///< service: it runs now
};

/// Finds out how Windows starts the guard. Usually there is one entry or none.
/// @throws std::runtime_error if Windows does not answer
[[nodiscard]] std::vector<AutostartEntry> ReadAutostart();

/// Lets Windows start the guard at power-on, in one way: an entry of the other kind is removed, one
/// of this kind is changed. The service starts automatically, has a description, and the service
/// manager starts it again if its process ends without an order. A guard that runs is left alone.
/// @throws std::runtime_error with the reason
void InstallAutostart(const GuardCommand& command);

/// Removes both kinds of entries. A guard that runs is left alone; Windows deletes its service when
/// it ends.
/// @return whether there was one
/// @throws std::runtime_error with the reason
bool RemoveAutostart();

/// Returns the path of a file in the folder of this program, UTF-8.
[[nodiscard]] std::string PathBesideThisProgram(const std::wstring& fileName);

/// Returns the command that ends the guard that runs now: "sc stop DaemonGuard" if its service
/// runs, otherwise "daemonctl exit". Programs of a desktop do not reach the supervisor of a
/// service. Both commands end the supervisor, too; its daemons run on.
/// @throws std::runtime_error if Windows does not answer
[[nodiscard]] std::string CommandThatEndsGuard();

/// What became of the order to start the guard.
enum class GuardStart {
    kStarted,
    kRunsAlready, ///< a guard runs; nothing was done
    kEnding       ///< its service is about to stop; nothing was done
};

/// Starts the guard now, unless one runs: the service, or the program in this session. Does not
/// wait for the supervisor. A service beside a guard of a session would fail again and again.
/// @throws std::runtime_error with the reason
GuardStart StartGuard(const GuardCommand& command);

} // namespace vqrx::client::v0
