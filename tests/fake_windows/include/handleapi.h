#pragma once

#include <windef.h>

inline const HANDLE INVALID_HANDLE_VALUE = reinterpret_cast<HANDLE>(~std::uintptr_t{0});

BOOL CloseHandle(HANDLE handle);
BOOL GetHandleInformation(HANDLE handle, DWORD* flags);
/// Returns the number of handles that are open in the fake.
BOOL GetProcessHandleCount(HANDLE process, DWORD* count);

// Owners of these handles need the functions to compile. No fake function makes such a handle, so
// each call fails as for an unknown handle.
BOOL FindClose(HANDLE search);
LONG RegCloseKey(HKEY key);

HLOCAL LocalFree(HLOCAL memory);
