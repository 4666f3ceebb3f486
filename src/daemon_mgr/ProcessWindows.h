#pragma once

#include <windows.h>

#include <vector>

namespace vqrx::system::daemon::daemon_mgr::v0 {

/// The top-level windows of a process, of all its threads. @throws std::bad_alloc
std::vector<HWND> WindowsOfProcess(DWORD processId);

/// The thread of each top-level window of a process: one entry per window, so that a thread with
/// two windows is there twice. @throws std::bad_alloc
std::vector<DWORD> WindowThreadsOfProcess(DWORD processId);

} // namespace vqrx::system::daemon::daemon_mgr::v0
