#include "PatchableFunction.h"

#include <windows.h>

#include <cstdio>
#include <cstdlib>

namespace {

// Ends the test program if a critical section is misused. Windows leaves such misuse undefined.
void AbortUnlessZero(int result, const char* misuse)
{
    if (result != 0) {
        std::fprintf(stderr, "critical section: %s: error %d\n", misuse, result);
        std::abort();
    }
}

} // namespace

DM_FAKE(BOOL, InitializeCriticalSectionAndSpinCount, (CRITICAL_SECTION * section, DWORD spinCount),
        (section, spinCount))
{
    static_cast<void>(spinCount);
    pthread_mutexattr_t attributes;
    pthread_mutexattr_init(&attributes);
    pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
    const int result = pthread_mutex_init(&section->mutex, &attributes);
    pthread_mutexattr_destroy(&attributes);
    if (result != 0) {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return FALSE;
    }
    return TRUE;
}

DM_FAKE(void, DeleteCriticalSection, (CRITICAL_SECTION * section), (section))
{
    AbortUnlessZero(pthread_mutex_destroy(&section->mutex), "deleted while it is held");
}

DM_FAKE(void, EnterCriticalSection, (CRITICAL_SECTION * section), (section))
{
    AbortUnlessZero(pthread_mutex_lock(&section->mutex), "cannot be entered");
}

DM_FAKE(BOOL, TryEnterCriticalSection, (CRITICAL_SECTION * section), (section))
{
    return pthread_mutex_trylock(&section->mutex) == 0 ? TRUE : FALSE;
}

DM_FAKE(void, LeaveCriticalSection, (CRITICAL_SECTION * section), (section))
{
    AbortUnlessZero(pthread_mutex_unlock(&section->mutex), "left by a thread that is not inside");
}
