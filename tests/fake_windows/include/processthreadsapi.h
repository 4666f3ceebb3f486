#pragma once

// Threads, the test program itself, and the fake processes (../FakeProcesses.h).

#include <windef.h>

inline constexpr DWORD STILL_ACTIVE = 259;
inline constexpr DWORD CREATE_NEW_CONSOLE = 0x10;
inline constexpr DWORD PROCESS_ALL_ACCESS = 0x1FFFFF;
inline constexpr DWORD SEM_FAILCRITICALERRORS = 1;

struct STARTUPINFOA {
    DWORD cb;
};
using LPSTARTUPINFOA = STARTUPINFOA*;
struct PROCESS_INFORMATION {
    HANDLE hProcess;
    HANDLE hThread;
    DWORD dwProcessId;
    DWORD dwThreadId;
};
using LPPROCESS_INFORMATION = PROCESS_INFORMATION*;

DWORD GetCurrentThreadId();
BOOL GetExitCodeThread(HANDLE thread, DWORD* code);
BOOL SwitchToThread();

HANDLE GetCurrentProcess();
DWORD GetCurrentProcessId();
BOOL GetProcessTimes(HANDLE process, FILETIME* created, FILETIME* exited, FILETIME* kernel,
                     FILETIME* user);

BOOL CreateProcessA(LPCSTR path, LPSTR commandLine, LPSECURITY_ATTRIBUTES process,
                    LPSECURITY_ATTRIBUTES thread, BOOL inherit, DWORD flags, LPVOID environment,
                    LPCSTR folder, LPSTARTUPINFOA startup, LPPROCESS_INFORMATION started);
HANDLE OpenProcess(DWORD access, BOOL inherit, DWORD processId);
DWORD GetProcessId(HANDLE process);
BOOL GetExitCodeProcess(HANDLE process, LPDWORD code);
BOOL TerminateProcess(HANDLE process, UINT code);

// This host shows no message boxes, so the error mode is always 0 and a new mode has no effect.
inline DWORD GetThreadErrorMode()
{
    return 0;
}
inline BOOL SetThreadErrorMode(DWORD, LPDWORD)
{
    return TRUE;
}
