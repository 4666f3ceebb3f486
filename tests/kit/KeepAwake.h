#pragma once

#include <windows.h>

namespace vqrx::kit {

/// Keeps the machine from going to sleep while nobody uses it, as long as this object exists. Must
/// be destroyed by the thread that made it.
class KeepAwake {
public:
    KeepAwake() noexcept
        : before_(SetThreadExecutionState(ES_CONTINUOUS | ES_SYSTEM_REQUIRED))
    {
    }
    KeepAwake(const KeepAwake&) = delete;
    KeepAwake& operator=(const KeepAwake&) = delete;
    ~KeepAwake() { SetThreadExecutionState(before_ | ES_CONTINUOUS); }

private:
    EXECUTION_STATE before_; // of this thread
};

} // namespace vqrx::kit
