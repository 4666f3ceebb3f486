#pragma once

#include "win32/UniqueHandle.h"

#include <windows.h>

namespace vqrx::app::v0 {

/// Switches the processing of escape sequences off in the process's console window, and restores the
/// mode when destroyed. Paths and arguments of daemons stand in the log, so a client decides which
/// characters reach the console. With the processing on, such a text could change the title or the
/// size of the window, erase earlier lines, or make the window send keystrokes.
/// Does nothing if the process has no console, or if Windows refuses. A process that is terminated
/// does not restore the mode.
class EscapeSequencesOff {
public:
    EscapeSequencesOff() noexcept;
    EscapeSequencesOff(const EscapeSequencesOff&) = delete;
    EscapeSequencesOff& operator=(const EscapeSequencesOff&) = delete;
    ~EscapeSequencesOff();

private:
    system::win32::v1::UniqueKernelHandle
        output_;       // the console's screen; empty: nothing to restore
    DWORD before_ = 0; // its mode before the change
};

} // namespace vqrx::app::v0
