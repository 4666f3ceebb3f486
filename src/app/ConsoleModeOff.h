#pragma once

#include "win32/UniqueHandle.h"

#include <windows.h>

namespace vqrx::app::v0 {

/// Switches a mode of the process's console window off, and restores it when destroyed.
/// Does nothing if the process has no console, if the mode is off, or if Windows refuses. A process
/// that is terminated does not restore the mode.
class ConsoleModeOff {
public:
    /// The QuickEdit mode. In it a click into the window selects text, and Windows stops every
    /// write to the console until the selection ends: the log would stop, and at the end the
    /// process.
    [[nodiscard]] static ConsoleModeOff QuickEdit() noexcept;

    /// The processing of escape sequences. Paths and arguments of daemons stand in the log, so a
    /// client decides which characters reach the console. With the processing on, such a text could
    /// change the title or the size of the window, erase earlier lines, or make the window send
    /// keystrokes.
    [[nodiscard]] static ConsoleModeOff EscapeSequences() noexcept;

    ConsoleModeOff(const ConsoleModeOff&) = delete;
    ConsoleModeOff& operator=(const ConsoleModeOff&) = delete;
    ~ConsoleModeOff();

private:
    // The console is opened by its name, because the standard streams may be redirected.
    // with: bits that every change of the mode needs.
    ConsoleModeOff(const char* console, DWORD mode, DWORD with) noexcept;

    system::win32::v1::UniqueKernelHandle console_; // empty: nothing to restore
    DWORD before_ = 0;                              // its modes before the change, and `with`
};

} // namespace vqrx::app::v0
