#pragma once

#include "ImportPatch.h"

#include <windows.h>

#include <vector>

namespace vqrx::test {

/// Notes how long the calling program sleeps and waits for an object, in the order of the calls,
/// and passes the calls on. One object at a time.
class WaitNotes {
public:
    WaitNotes()
    {
        sleeps.clear();
        waits.clear();
    }
    WaitNotes(const WaitNotes&) = delete;
    WaitNotes& operator=(const WaitNotes&) = delete;

    /// Milliseconds of the calls of Sleep.
    [[nodiscard]] static const std::vector<DWORD>& Sleeps() { return sleeps; }
    /// Milliseconds of the calls of WaitForSingleObject.
    [[nodiscard]] static const std::vector<DWORD>& Waits() { return waits; }

private:
    static void WINAPI NoteSleep(DWORD milliseconds)
    {
        sleeps.push_back(milliseconds);
        realSleep(milliseconds);
    }
    static DWORD WINAPI NoteWait(HANDLE object, DWORD milliseconds)
    {
        waits.push_back(milliseconds);
        return realWait(object, milliseconds);
    }

    static inline void(WINAPI* realSleep)(DWORD) = nullptr;
    static inline DWORD(WINAPI* realWait)(HANDLE, DWORD) = nullptr;
    static inline std::vector<DWORD> sleeps;
    static inline std::vector<DWORD> waits;

    const ImportPatch sleep_{"Sleep", NoteSleep, realSleep};
    const ImportPatch wait_{"WaitForSingleObject", NoteWait, realWait};
};

} // namespace vqrx::test
