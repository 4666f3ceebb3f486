#pragma once

#include "win32/UniqueHandle.h"

#include <windows.h>

#include <string>

namespace vqrx::guard::v0 {

/// Makes sure that one guard runs on a machine: keeps a file open that no second process can open.
/// Windows closes and deletes the file with the process, however the process ends. Only somebody
/// who may write to the folder of the logs can keep a guard from running.
///
/// Without its lock the guard runs on if the disk is full, if the folder is missing, or if Windows
/// refuses access to an administrator: that is better than a machine without a supervisor. If
/// Windows refuses a user with lesser rights, the guard ends: this user does not belong to the
/// machine's supervisor, and may be logged on beside the one who does.
class SingleGuard {
public:
    /// Waits at most `limitMs` until the file can be opened: a former guard may end just now.
    /// @param file  path in the ANSI code page
    /// @throws std::runtime_error if another guard runs, or if this user may not make the file
    SingleGuard(const std::string& file, DWORD limitMs);

    /// Returns why this guard runs without its lock, UTF-8; empty if it has the lock.
    [[nodiscard]] const std::string& Fault() const noexcept { return fault_; }

private:
    std::string fault_;
    system::win32::v1::UniqueKernelHandle file_;
};

} // namespace vqrx::guard::v0
