// Services of the fake machine: one service, MpsSvc, which runs.
#include "PatchableFunction.h"

#include <windows.h>

namespace {

int service = 0; // Every handle to the service manager or to the service is its address.

} // namespace

DM_FAKE(BOOL, CloseServiceHandle, (SC_HANDLE handle), (handle))
{
    if (handle != reinterpret_cast<SC_HANDLE>(&service)) {
        SetLastError(ERROR_INVALID_HANDLE);
        return FALSE;
    }
    return TRUE;
}

SC_HANDLE OpenSCManagerA(LPCSTR, LPCSTR, DWORD)
{
    return reinterpret_cast<SC_HANDLE>(&service);
}

SC_HANDLE OpenServiceA(SC_HANDLE, LPCSTR, DWORD)
{
    return reinterpret_cast<SC_HANDLE>(&service);
}

BOOL QueryServiceConfigA(SC_HANDLE, QUERY_SERVICE_CONFIGA* config, DWORD, LPDWORD)
{
    config->dwStartType = 2;
    return TRUE;
}

BOOL QueryServiceStatus(SC_HANDLE, SERVICE_STATUS* status)
{
    status->dwCurrentState = SERVICE_RUNNING;
    return TRUE;
}

// Reports one service. No test attaches its process.
BOOL EnumServicesStatusExA(SC_HANDLE, SC_ENUM_TYPE, DWORD, DWORD, LPBYTE buffer, DWORD size,
                           LPDWORD needed, LPDWORD count, LPDWORD, LPCSTR)
{
    static char name[] = "MpsSvc";
    *needed = sizeof(ENUM_SERVICE_STATUS_PROCESSA);
    if (size < *needed) {
        SetLastError(ERROR_MORE_DATA);
        return FALSE;
    }
    *reinterpret_cast<ENUM_SERVICE_STATUS_PROCESSA*>(buffer) = {name, name, {SERVICE_RUNNING, 1}};
    *count = 1;
    return TRUE;
}
