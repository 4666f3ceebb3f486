#pragma once

#include "win32/UniqueHandle.h"

#include <cstdint>

namespace vqrx::client::v0 {

/// Lets a command that runs until Ctrl+C end in order. As long as this object exists, Ctrl+C and
/// Ctrl+Break do not end the program. There may be one such object at a time.
class Interrupt {
public:
    /// @throws std::runtime_error if the console's control handler cannot be set
    Interrupt();
    Interrupt(const Interrupt&) = delete;
    Interrupt& operator=(const Interrupt&) = delete;
    ~Interrupt();

    /// Waits until the user interrupts. After the first interrupt every call returns true at once.
    /// If the console's window is closed, Windows ends the program all the same.
    /// @param limitMs  milliseconds to wait at most
    /// @return whether the user has interrupted
    [[nodiscard]] bool WaitFor(std::uint32_t limitMs) const;

private:
    system::win32::v1::UniqueKernelHandle event_;
};

} // namespace vqrx::client::v0
