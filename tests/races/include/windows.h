#pragma once

// Adds to the primitives of tests/native_win32 what the supervision calls of Windows: processes,
// windows, services, texts. StandInWindows.cpp defines it.
#pragma GCC system_header // include_next is an extension
#include_next <windows.h>

#include <cstdint>

#define STDMETHODCALLTYPE
#define APIENTRY

using BYTE = unsigned char;
using UINT = std::uint32_t;
using LPVOID = void*;
using LPSTR = char*;
using LPBYTE = BYTE*;
using LPDWORD = DWORD*;
using LPCWSTR = const wchar_t*;
using LPWSTR = wchar_t*;
using OLECHAR = wchar_t;
using LPARAM = std::intptr_t;
using WPARAM = std::uintptr_t;
using LPSECURITY_ATTRIBUTES = SECURITY_ATTRIBUTES*;
struct HWND__;
using HWND = HWND__*;
using HLOCAL = void*;

inline constexpr HRESULT S_OK = 0;
inline constexpr HRESULT S_FALSE = 1;
inline constexpr HRESULT E_NOTIMPL = static_cast<HRESULT>(0x80004001);
inline constexpr HRESULT E_NOINTERFACE = static_cast<HRESULT>(0x80004002);
inline constexpr HRESULT E_POINTER = static_cast<HRESULT>(0x80004003);
inline constexpr HRESULT E_FAIL = static_cast<HRESULT>(0x80004005);
inline constexpr HRESULT E_UNEXPECTED = static_cast<HRESULT>(0x8000FFFF);
inline constexpr HRESULT E_OUTOFMEMORY = static_cast<HRESULT>(0x8007000E);
inline constexpr HRESULT E_INVALIDARG = static_cast<HRESULT>(0x80070057);
inline constexpr bool SUCCEEDED(HRESULT hr)
{
    return hr >= 0;
}
inline constexpr bool FAILED(HRESULT hr)
{
    return hr < 0;
}

inline constexpr DWORD ERROR_INSUFFICIENT_BUFFER = 122;
inline constexpr DWORD ERROR_MORE_DATA = 234;
inline constexpr UINT CP_ACP = 0;
inline constexpr UINT CP_THREAD_ACP = 3;
inline constexpr DWORD CREATE_NEW_CONSOLE = 0x10;
inline constexpr DWORD PROCESS_ALL_ACCESS = 0x1FFFFF;
inline constexpr UINT WM_QUIT = 18;
inline constexpr UINT WM_CHAR = 258;

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

BOOL CreateProcessA(LPCSTR path, LPSTR commandLine, LPSECURITY_ATTRIBUTES process,
                    LPSECURITY_ATTRIBUTES thread, BOOL inherit, DWORD flags, LPVOID environment,
                    LPCSTR folder, LPSTARTUPINFOA startup, LPPROCESS_INFORMATION started);
// This host has no boxes to ask with.
inline constexpr DWORD SEM_FAILCRITICALERRORS = 1;
inline DWORD GetThreadErrorMode()
{
    return 0;
}
inline BOOL SetThreadErrorMode(DWORD, LPDWORD)
{
    return TRUE;
}
HANDLE OpenProcess(DWORD access, BOOL inherit, DWORD processId);
DWORD GetProcessId(HANDLE process);
BOOL GetExitCodeProcess(HANDLE process, LPDWORD code);
BOOL TerminateProcess(HANDLE process, UINT code);

using WNDENUMPROC = BOOL (*)(HWND, LPARAM);
BOOL EnumWindows(WNDENUMPROC visit, LPARAM parameter);
DWORD GetWindowThreadProcessId(HWND window, LPDWORD processId);
BOOL PostMessageA(HWND window, UINT message, WPARAM first, LPARAM second);
BOOL PostThreadMessageA(DWORD threadId, UINT message, WPARAM first, LPARAM second);

int WideCharToMultiByte(UINT codePage, DWORD flags, LPCWSTR text, int length, LPSTR buffer,
                        int size, LPCSTR unknown, BOOL* usedUnknown);
int MultiByteToWideChar(UINT codePage, DWORD flags, LPCSTR text, int length, LPWSTR buffer,
                        int size);
HLOCAL LocalFree(HLOCAL memory);

inline constexpr DWORD SC_MANAGER_CONNECT = 1;
inline constexpr DWORD SC_MANAGER_ENUMERATE_SERVICE = 4;
inline constexpr DWORD SC_MANAGER_ALL_ACCESS = 0xF003F;
inline constexpr DWORD SERVICE_QUERY_CONFIG = 1;
inline constexpr DWORD SERVICE_QUERY_STATUS = 4;
inline constexpr DWORD SERVICE_ALL_ACCESS = 0xF01FF;
inline constexpr DWORD SERVICE_DISABLED = 4;
inline constexpr DWORD SERVICE_RUNNING = 4;
inline constexpr DWORD SERVICE_WIN32_OWN_PROCESS = 0x10;
inline constexpr DWORD SERVICE_ACTIVE = 1;
enum SC_ENUM_TYPE { SC_ENUM_PROCESS_INFO = 0 };
struct QUERY_SERVICE_CONFIGA {
    DWORD dwServiceType;
    DWORD dwStartType;
};
struct SERVICE_STATUS {
    DWORD dwServiceType;
    DWORD dwCurrentState;
};
struct SERVICE_STATUS_PROCESS {
    DWORD dwCurrentState;
    DWORD dwProcessId;
};
struct ENUM_SERVICE_STATUS_PROCESSA {
    LPSTR lpServiceName;
    LPSTR lpDisplayName;
    SERVICE_STATUS_PROCESS ServiceStatusProcess;
};
SC_HANDLE OpenSCManagerA(LPCSTR machine, LPCSTR database, DWORD access);
SC_HANDLE OpenServiceA(SC_HANDLE manager, LPCSTR name, DWORD access);
BOOL QueryServiceConfigA(SC_HANDLE service, QUERY_SERVICE_CONFIGA* config, DWORD size,
                         LPDWORD needed);
BOOL QueryServiceStatus(SC_HANDLE service, SERVICE_STATUS* status);
BOOL EnumServicesStatusExA(SC_HANDLE manager, SC_ENUM_TYPE level, DWORD types, DWORD states,
                           LPBYTE buffer, DWORD size, LPDWORD needed, LPDWORD count, LPDWORD resume,
                           LPCSTR group);
