#pragma once

#include "win32/UniqueHandle.h"

#include <windows.h>

namespace vqrx::app::v0 {

/// Switches the QuickEdit mode of the process's console window off, and restores the mode when
/// destroyed. In that mode a click into the window selects text, and Windows stops every write to
/// the console until the selection ends: the log would stop, and at the end the process.
/// Does nothing if the process has no console, or if Windows refuses. A process that is terminated
/// does not restore the mode.
class QuickEditOff {
public:
    QuickEditOff() noexcept;
    QuickEditOff(const QuickEditOff&) = delete;
    QuickEditOff& operator=(const QuickEditOff&) = delete;
    ~QuickEditOff();

private:
    system::win32::v1::UniqueKernelHandle input_; // the console's input; empty: nothing to restore
    DWORD before_ = 0;                            // its mode before the change
};

} // namespace vqrx::app::v0
