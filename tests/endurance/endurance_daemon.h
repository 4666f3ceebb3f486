#pragma once

#include "ChildProgram.h"

#include <string>

namespace vqrx::test {

/// Holds the mutex that stands for a daemon's name until the process ends. When another process
/// holds it for good, that is said by the event "dm_endurance_twice".
inline void HoldName(const std::string& name)
{
    for (int attempt = 0; attempt < 100; ++attempt) { // the one before may still be on its way out
        const HANDLE mutex = CreateMutexA(nullptr, FALSE, ("dm_endurance_" + name).c_str());
        if (GetLastError() != ERROR_ALREADY_EXISTS) {
            return;
        }
        CloseHandle(mutex);
        Sleep(100);
    }
    SignalReady("dm_endurance_twice");
}

} // namespace vqrx::test
