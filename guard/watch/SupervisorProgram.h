#pragma once

#include "win32/UniqueHandle.h"

#include <windows.h>

#include <cstdint>
#include <optional>
#include <string>

namespace vqrx::guard::v0 {

/// A running process of the supervisor. It is kept open, so that Windows does not give its id to
/// another process.
struct SupervisorProgram {
    /// May be waited for, ended, and read for a dump.
    system::win32::v1::UniqueKernelHandle process;
    std::uint32_t processId = 0;
    std::int64_t createdMs = 0; ///< milliseconds since 1970, UTC
};

/// Finds a process that runs the supervisor's program. If there are several, takes the youngest:
/// the older ones are about to end. (The youngest may be a supervisor that is just being refused
/// because another one runs. It ends at once, and the next look finds the other one.) A process of
/// a user who is not expected to run the supervisor (daemon_manager::IdentifySupervisor) does not
/// count, nor does one that can be opened although Windows does not show its user.
/// @param program  full path of DaemonManager.exe, UTF-8
/// @return nothing if none runs
/// @throws std::runtime_error if the processes cannot be listed, or if a supervisor's process
///         cannot be opened
[[nodiscard]] std::optional<SupervisorProgram> FindSupervisor(const std::string& program);

/// Starts the supervisor with a console of its own.
/// @param showConsole  whether its window is shown
/// @throws std::runtime_error with the reason if it cannot be started
[[nodiscard]] SupervisorProgram StartSupervisor(const std::string& program, bool showConsole);

/// Returns the session of a supervisor, if it is another one than that of this process. Windows
/// keeps the objects that programs publish apart for each session.
[[nodiscard]] std::optional<std::uint32_t> OtherSessionOf(const SupervisorProgram& supervisor);

/// Returns whether the process has ended.
[[nodiscard]] bool HasEnded(const SupervisorProgram& supervisor) noexcept;

/// Returns when the process ended, milliseconds since 1970, UTC; 0 if Windows does not show it. The
/// process must have ended.
[[nodiscard]] std::int64_t EndedMs(const SupervisorProgram& supervisor) noexcept;

/// Names a supervisor for people: "process 1234".
[[nodiscard]] std::string NameOf(const SupervisorProgram& supervisor);

/// Terminates a process and waits at most 10 s until it is gone. @return whether it is gone
[[nodiscard]] bool TerminateSupervisor(const SupervisorProgram& supervisor) noexcept;

/// Returns the exit code of a process that has ended; 0xFFFFFFFF if it cannot be read.
[[nodiscard]] std::uint32_t ExitCodeOf(const SupervisorProgram& supervisor) noexcept;

} // namespace vqrx::guard::v0
