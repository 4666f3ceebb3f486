#pragma once

#include <windef.h>

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

DWORD GetTickCount();
BOOL GetSystemTimes(FILETIME* idle, FILETIME* kernel, FILETIME* user);
/// Sets the physical memory and the page file only.
BOOL GlobalMemoryStatusEx(MEMORYSTATUSEX* status);
