#pragma once

#include "win32/UniqueHandle.h"

#include <windows.h>

#include <string>

namespace vqrx::guard::v0 {

/// Makes sure that one guard runs on a machine: keeps a file open that no second process can open.
/// Windows closes and deletes the file with the process, however the process ends. Only somebody
/// who may write to the folder of the logs can keep a guard from running.
class SingleGuard {
public:
    /// Waits at most `limitMs` until the file can be opened: a former guard may end just now.
    /// @param file  path in the ANSI code page
    /// @throws std::runtime_error if another guard runs, or if the file cannot be made
    SingleGuard(const std::string& file, DWORD limitMs);

private:
    system::win32::v1::UniqueKernelHandle file_;
};

} // namespace vqrx::guard::v0
