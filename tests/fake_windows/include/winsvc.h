#pragma once

// Services: one service, MpsSvc, which runs.

#include <windef.h>

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
BOOL CloseServiceHandle(SC_HANDLE service);
SC_HANDLE OpenServiceA(SC_HANDLE manager, LPCSTR name, DWORD access);
BOOL QueryServiceConfigA(SC_HANDLE service, QUERY_SERVICE_CONFIGA* config, DWORD size,
                         LPDWORD needed);
BOOL QueryServiceStatus(SC_HANDLE service, SERVICE_STATUS* status);
BOOL EnumServicesStatusExA(SC_HANDLE manager, SC_ENUM_TYPE level, DWORD types, DWORD states,
                           LPBYTE buffer, DWORD size, LPDWORD needed, LPDWORD count, LPDWORD resume,
                           LPCSTR group);
