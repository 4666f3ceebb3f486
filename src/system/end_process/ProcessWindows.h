#pragma once

#include <windows.h>

#include <vector>

namespace vqrx::system::end_process::v1 {

/// Finds the top-level windows of all threads of a process. @throws std::bad_alloc
[[nodiscard]] std::vector<HWND> WindowsOfProcess(DWORD processId);

/// Finds the thread of each top-level window of a process. There is one thread id per window: a
/// thread with two windows is in the list twice. @throws std::bad_alloc
[[nodiscard]] std::vector<DWORD> WindowThreadsOfProcess(DWORD processId);

} // namespace vqrx::system::end_process::v1
