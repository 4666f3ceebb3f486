#pragma once

#include <windows.h>

#include <functional>
#include <string>

namespace vqrx::test {

/// Controls the fake processes of the fake machine. A fake process runs no code. It ends after
/// Kill, TerminateProcess, or WM_QUIT. Any thread may call these functions.
namespace machine {

/// Removes all processes and the hook of BeforeStart.
void Reset();
/// Sets the hook that CreateProcessA calls before it starts a process, on the calling thread. The
/// hook may block. Null removes the hook.
void BeforeStart(std::function<void(const std::string& path)> hook);
/// Starts a process without a client and returns its id. A process whose path contains "window" has
/// a window and ends after WM_QUIT. A process whose path contains "deaf" has a window and ignores
/// WM_QUIT.
[[nodiscard]] DWORD Start(const std::string& path);
/// Ends a process with exit code 9, as a crash does.
void Kill(DWORD processId);
[[nodiscard]] bool Runs(DWORD processId);
/// Reports whether a thread of the process received WM_QUIT.
[[nodiscard]] bool WasAskedToQuit(DWORD processId);
/// Returns the number of running processes with this path.
[[nodiscard]] unsigned Running(const std::string& path);
/// Returns the number of processes with this path that were started since Reset.
[[nodiscard]] unsigned Started(const std::string& path);
/// Returns the id of the newest process with this path; 0 if there is none.
[[nodiscard]] DWORD Last(const std::string& path);

} // namespace machine
} // namespace vqrx::test
