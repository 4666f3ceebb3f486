#pragma once

#include <windows.h>

namespace vqrx::system::win32::v1 {

/// Keeps Windows from showing error boxes for calls of this thread. With such a box, Windows
/// reports a critical error (a drive without a medium, a damaged program) and waits for an answer;
/// without it, the call fails. The error mode is set for the thread, because every child process
/// would inherit the error mode of the process. Create and destroy it on the same thread.
class [[nodiscard]] NoErrorBoxes {
public:
    NoErrorBoxes() noexcept
        : before_(GetThreadErrorMode())
    {
        SetThreadErrorMode(before_ | SEM_FAILCRITICALERRORS, nullptr);
    }
    NoErrorBoxes(const NoErrorBoxes&) = delete;
    NoErrorBoxes& operator=(const NoErrorBoxes&) = delete;
    ~NoErrorBoxes() { SetThreadErrorMode(before_, nullptr); }

private:
    DWORD before_;
};

} // namespace vqrx::system::win32::v1
