#pragma once

#include <windows.h>

namespace vqrx::system::win32::v1 {

/// For as long as it lives, a call on this thread that meets a critical error (a drive without its
/// medium, a damaged program) fails, where Windows would otherwise ask on the desktop and wait for
/// an answer. It is the thread's mode and not the process's, which every child would inherit.
/// Destroyed on the thread that made it.
class NoErrorBoxes {
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
