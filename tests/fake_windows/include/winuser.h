#pragma once

// Windows of the fake processes (../FakeProcesses.h) and messages to them.

#include <windef.h>

inline constexpr UINT WM_QUIT = 18;
inline constexpr UINT WM_CHAR = 258;

using WNDENUMPROC = BOOL (*)(HWND, LPARAM);
BOOL EnumWindows(WNDENUMPROC visit, LPARAM parameter);
DWORD GetWindowThreadProcessId(HWND window, LPDWORD processId);
/// Has no effect.
BOOL PostMessageA(HWND window, UINT message, WPARAM first, LPARAM second);
/// Only WM_QUIT has an effect.
BOOL PostThreadMessageA(DWORD threadId, UINT message, WPARAM first, LPARAM second);
