#pragma once

// Libraries: this host has none of Windows.

#include <windef.h>

inline constexpr UINT MAX_PATH = 260;
inline constexpr DWORD LOAD_WITH_ALTERED_SEARCH_PATH = 8;

struct HINSTANCE__;
using HMODULE = HINSTANCE__*;
using FARPROC = std::intptr_t (*)();

HMODULE LoadLibraryExW(LPCWSTR path, HANDLE reserved, DWORD flags);
FARPROC GetProcAddress(HMODULE library, LPCSTR name);
UINT GetSystemDirectoryW(LPWSTR buffer, UINT size);
