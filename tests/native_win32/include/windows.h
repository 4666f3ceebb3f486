#pragma once

// A stand-in for the Windows header on other hosts; see ../CMakeLists.txt.

#include <pthread.h>

#include <cstddef>
#include <cstdint>

#define WINAPI
#define CALLBACK
#define __stdcall
#define __cdecl

using BOOL = int;
using WORD = std::uint16_t;
using LONG = std::int32_t;
using DWORD = std::uint32_t;
using ULONG = std::uint32_t;
using HRESULT = std::int32_t;
using SIZE_T = std::size_t;
using ULONGLONG = std::uint64_t;
using DWORDLONG = std::uint64_t;
using HANDLE = void*;
using LPCSTR = const char*;
using PVOID = void*;

// Two types of handles that nothing makes here; they exist for their owners to compile.
struct SC_HANDLE__;
using SC_HANDLE = SC_HANDLE__*;
struct HKEY__;
using HKEY = HKEY__*;

inline constexpr BOOL FALSE = 0;
inline constexpr BOOL TRUE = 1;
inline constexpr DWORD INFINITE = 0xFFFFFFFF;
inline constexpr DWORD MAXIMUM_WAIT_OBJECTS = 64;
inline constexpr DWORD WAIT_OBJECT_0 = 0;
inline constexpr DWORD WAIT_TIMEOUT = 258;
inline constexpr DWORD WAIT_FAILED = 0xFFFFFFFF;
inline constexpr DWORD STILL_ACTIVE = 259;
inline constexpr DWORD ERROR_SUCCESS = 0;
inline constexpr DWORD ERROR_FILE_NOT_FOUND = 2;
inline constexpr DWORD ERROR_ACCESS_DENIED = 5;
inline constexpr DWORD ERROR_INVALID_HANDLE = 6;
inline constexpr DWORD ERROR_NOT_ENOUGH_MEMORY = 8;
inline constexpr DWORD ERROR_INVALID_PARAMETER = 87;
inline constexpr DWORD ERROR_CALL_NOT_IMPLEMENTED = 120;
inline constexpr DWORD ERROR_TOO_MANY_POSTS = 298;

inline const HANDLE INVALID_HANDLE_VALUE = reinterpret_cast<HANDLE>(~std::uintptr_t{0});

struct SECURITY_ATTRIBUTES;

struct FILETIME {
    DWORD dwLowDateTime;
    DWORD dwHighDateTime;
};

struct MEMORYSTATUSEX {
    DWORD dwLength;
    DWORD dwMemoryLoad;
    DWORDLONG ullTotalPhys;
    DWORDLONG ullAvailPhys;
    DWORDLONG ullTotalPageFile;
    DWORDLONG ullAvailPageFile;
    DWORDLONG ullTotalVirtual;
    DWORDLONG ullAvailVirtual;
    DWORDLONG ullAvailExtendedVirtual;
};

struct CRITICAL_SECTION {
    pthread_mutex_t mutex;
};
using LPCRITICAL_SECTION = CRITICAL_SECTION*;

inline HRESULT HRESULT_FROM_WIN32(DWORD error) noexcept
{
    return static_cast<HRESULT>(error) <= 0 ? static_cast<HRESULT>(error)
                                            : static_cast<HRESULT>((error & 0xFFFFU) | 0x80070000U);
}

DWORD GetLastError() noexcept;
void SetLastError(DWORD error) noexcept;

BOOL InitializeCriticalSectionAndSpinCount(CRITICAL_SECTION* section, DWORD spinCount);
void DeleteCriticalSection(CRITICAL_SECTION* section);
void EnterCriticalSection(CRITICAL_SECTION* section);
BOOL TryEnterCriticalSection(CRITICAL_SECTION* section);
void LeaveCriticalSection(CRITICAL_SECTION* section);

HANDLE CreateEventA(SECURITY_ATTRIBUTES* security, BOOL manualReset, BOOL initial,
                    const char* name);
BOOL SetEvent(HANDLE event);
BOOL ResetEvent(HANDLE event);
HANDLE CreateSemaphoreA(SECURITY_ATTRIBUTES* security, LONG initial, LONG maximum,
                        const char* name);
BOOL ReleaseSemaphore(HANDLE semaphore, LONG count, LONG* previous);
BOOL CloseHandle(HANDLE handle);
BOOL GetHandleInformation(HANDLE handle, DWORD* flags);

DWORD WaitForSingleObject(HANDLE handle, DWORD timeoutMs);
/// Waits for any; waiting for all is refused.
DWORD WaitForMultipleObjects(DWORD count, const HANDLE* handles, BOOL all, DWORD timeoutMs);
DWORD SignalObjectAndWait(HANDLE toSignal, HANDLE toWaitFor, DWORD timeoutMs, BOOL alertable);

DWORD GetCurrentThreadId();
BOOL GetExitCodeThread(HANDLE thread, DWORD* code);
void Sleep(DWORD milliseconds);
BOOL SwitchToThread();
DWORD GetTickCount();

LONG InterlockedIncrement(LONG volatile* value);
LONG InterlockedDecrement(LONG volatile* value);
LONG InterlockedExchange(LONG volatile* value, LONG wanted);
LONG InterlockedCompareExchange(LONG volatile* value, LONG wanted, LONG expected);

HANDLE GetCurrentProcess();
DWORD GetCurrentProcessId();
BOOL GetProcessTimes(HANDLE process, FILETIME* created, FILETIME* exited, FILETIME* kernel,
                     FILETIME* user);
BOOL GetSystemTimes(FILETIME* idle, FILETIME* kernel, FILETIME* user);
BOOL GlobalMemoryStatusEx(MEMORYSTATUSEX* status);
/// How many handles of this stand-in are open.
BOOL GetProcessHandleCount(HANDLE process, DWORD* count);

// For the owners of handles that nothing makes here: always the failure for an unknown handle.
BOOL FindClose(HANDLE search);
BOOL CloseServiceHandle(SC_HANDLE service);
LONG RegCloseKey(HKEY key);
