#include "Import.h"

#include <windows.h>

#include <cstdio>
#include <cstdlib>

namespace {

// Misuse that Windows leaves undefined ends the test program.
void Demand(int result, const char* what)
{
    if (result != 0) {
        std::fprintf(stderr, "critical section: %s: error %d\n", what, result);
        std::abort();
    }
}

} // namespace

DM_IMPORT(BOOL, InitializeCriticalSectionAndSpinCount,
          (CRITICAL_SECTION * section, DWORD spinCount), (section, spinCount))
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

DM_IMPORT(void, DeleteCriticalSection, (CRITICAL_SECTION * section), (section))
{
    Demand(pthread_mutex_destroy(&section->mutex), "deleted while it is held");
}

DM_IMPORT(void, EnterCriticalSection, (CRITICAL_SECTION * section), (section))
{
    Demand(pthread_mutex_lock(&section->mutex), "cannot be entered");
}

DM_IMPORT(BOOL, TryEnterCriticalSection, (CRITICAL_SECTION * section), (section))
{
    return pthread_mutex_trylock(&section->mutex) == 0 ? TRUE : FALSE;
}

DM_IMPORT(void, LeaveCriticalSection, (CRITICAL_SECTION * section), (section))
{
    Demand(pthread_mutex_unlock(&section->mutex), "left by a thread that is not inside");
}
