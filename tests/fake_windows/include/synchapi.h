#pragma once

// Locks, events, semaphores and waits.

#include <handleapi.h>
#include <pthread.h>

inline constexpr DWORD INFINITE = 0xFFFFFFFF;
inline constexpr DWORD MAXIMUM_WAIT_OBJECTS = 64;
inline constexpr DWORD WAIT_OBJECT_0 = 0;
inline constexpr DWORD WAIT_TIMEOUT = 258;
inline constexpr DWORD WAIT_FAILED = 0xFFFFFFFF;

struct CRITICAL_SECTION {
    pthread_mutex_t mutex;
};
using LPCRITICAL_SECTION = CRITICAL_SECTION*;

BOOL InitializeCriticalSectionAndSpinCount(CRITICAL_SECTION* section, DWORD spinCount);
void DeleteCriticalSection(CRITICAL_SECTION* section);
void EnterCriticalSection(CRITICAL_SECTION* section);
BOOL TryEnterCriticalSection(CRITICAL_SECTION* section);
void LeaveCriticalSection(CRITICAL_SECTION* section);

/// Fails for an event with a name.
HANDLE CreateEventA(SECURITY_ATTRIBUTES* security, BOOL manualReset, BOOL initial,
                    const char* name);
BOOL SetEvent(HANDLE event);
BOOL ResetEvent(HANDLE event);
/// Fails for a semaphore with a name.
HANDLE CreateSemaphoreA(SECURITY_ATTRIBUTES* security, LONG initial, LONG maximum,
                        const char* name);
BOOL ReleaseSemaphore(HANDLE semaphore, LONG count, LONG* previous);

DWORD WaitForSingleObject(HANDLE handle, DWORD timeoutMs);
/// Waits until one of the objects is signalled. Fails when all is true and count is above 1.
DWORD WaitForMultipleObjects(DWORD count, const HANDLE* handles, BOOL all, DWORD timeoutMs);
DWORD SignalObjectAndWait(HANDLE toSignal, HANDLE toWaitFor, DWORD timeoutMs, BOOL alertable);

void Sleep(DWORD milliseconds);

LONG InterlockedIncrement(LONG volatile* value);
LONG InterlockedDecrement(LONG volatile* value);
LONG InterlockedExchange(LONG volatile* value, LONG wanted);
LONG InterlockedCompareExchange(LONG volatile* value, LONG wanted, LONG expected);
