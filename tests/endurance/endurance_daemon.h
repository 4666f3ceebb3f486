#pragma once

#include "ChildProgram.h"

#include <string>

namespace vqrx::test {

/// Creates the mutex for the daemon's name and keeps it until the process ends. Signals the event
/// "dm_endurance_twice" if another process keeps this mutex for 10 s.
inline void HoldName(const std::string& name)
{
    for (int attempt = 0; attempt < 100;
         ++attempt) { // The earlier process of the daemon may be ending.
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
