#pragma once

#include <windows.h>

#include <functional>
#include <string>

namespace vqrx::test {

/// The processes of a machine that has none: they run until they are told to end.
namespace machine {

/// Begins anew, without processes.
void Reset();
/// Called before each process is made, on the thread that makes it; may block it.
void BeforeStart(std::function<void(const std::string& path)> hook);
/// Processes of paths that contain "window" have a window and quit when they are asked to, those of
/// paths with "deaf" have one and do not.
DWORD Start(const std::string& path);
/// Ends a process, as a crash does.
void Kill(DWORD processId);
bool Runs(DWORD processId);
/// Whether a thread of the process was sent the quit message.
bool WasAskedToQuit(DWORD processId);
/// How many processes of this path run, and how many have been started.
unsigned Running(const std::string& path);
unsigned Started(const std::string& path);
/// The last process that was started of this path; 0 for none.
DWORD Last(const std::string& path);

} // namespace machine
} // namespace vqrx::test
