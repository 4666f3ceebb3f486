#pragma once

#include "ImportPatch.h"

#include <windows.h>

namespace vqrx::test {

/// Counts the critical sections that one thread is inside: the thread that made this object. Make
/// it before the object under test, because no other thread may use a critical section meanwhile.
class LockDepth {
public:
    LockDepth()
    {
        counted = GetCurrentThreadId();
        depth = 0;
    }

    /// Returns the number of critical sections that the counted thread is inside. On every other
    /// thread it returns -1.
    [[nodiscard]] static int Here() { return GetCurrentThreadId() == counted ? depth : -1; }

private:
    using Section = void WINAPI(CRITICAL_SECTION*);

    static void WINAPI Enter(CRITICAL_SECTION* section)
    {
        realEnter(section);
        // Even an addition of 0 would race with the counted thread.
        if (GetCurrentThreadId() == counted) {
            ++depth;
        }
    }
    static void WINAPI Leave(CRITICAL_SECTION* section)
    {
        if (GetCurrentThreadId() == counted) {
            --depth;
        }
        realLeave(section);
    }

    static inline DWORD counted = 0;
    static inline int depth = 0;
    static inline Section* realEnter = nullptr;
    static inline Section* realLeave = nullptr;

    ImportPatch enter_{"EnterCriticalSection", &Enter, realEnter};
    ImportPatch leave_{"LeaveCriticalSection", &Leave, realLeave};
};

} // namespace vqrx::test
