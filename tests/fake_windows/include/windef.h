#pragma once

// Types, result codes and error numbers. All values are the same as on Windows.

#include <cstddef>
#include <cstdint>

#define WINAPI
#define APIENTRY
#define CALLBACK
#define STDMETHODCALLTYPE
#define __stdcall
#define __cdecl

using BOOL = int;
using BYTE = unsigned char;
using WORD = std::uint16_t;
using LONG = std::int32_t;
using UINT = std::uint32_t;
using DWORD = std::uint32_t;
using ULONG = std::uint32_t;
using HRESULT = std::int32_t;
using SIZE_T = std::size_t;
using ULONGLONG = std::uint64_t;
using DWORDLONG = std::uint64_t;
using LPARAM = std::intptr_t;
using WPARAM = std::uintptr_t;
using OLECHAR = wchar_t;
using PVOID = void*;
using LPVOID = void*;
using LPBYTE = BYTE*;
using LPDWORD = DWORD*;
using LPSTR = char*;
using LPCSTR = const char*;
using LPWSTR = wchar_t*;
using LPCWSTR = const wchar_t*;

using HANDLE = void*;
using HLOCAL = void*;
struct SC_HANDLE__;
using SC_HANDLE = SC_HANDLE__*;
struct HWND__;
using HWND = HWND__*;
// No fake function makes such a handle; the type lets its owner compile.
struct HKEY__;
using HKEY = HKEY__*;

struct SECURITY_ATTRIBUTES;
using LPSECURITY_ATTRIBUTES = SECURITY_ATTRIBUTES*;

struct FILETIME {
    DWORD dwLowDateTime;
    DWORD dwHighDateTime;
};

inline constexpr BOOL FALSE = 0;
inline constexpr BOOL TRUE = 1;

inline constexpr DWORD ERROR_SUCCESS = 0;
inline constexpr DWORD ERROR_FILE_NOT_FOUND = 2;
inline constexpr DWORD ERROR_ACCESS_DENIED = 5;
inline constexpr DWORD ERROR_INVALID_HANDLE = 6;
inline constexpr DWORD ERROR_NOT_ENOUGH_MEMORY = 8;
inline constexpr DWORD ERROR_INVALID_PARAMETER = 87;
inline constexpr DWORD ERROR_CALL_NOT_IMPLEMENTED = 120;
inline constexpr DWORD ERROR_INSUFFICIENT_BUFFER = 122;
inline constexpr DWORD ERROR_MORE_DATA = 234;
inline constexpr DWORD ERROR_TOO_MANY_POSTS = 298;

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
inline HRESULT HRESULT_FROM_WIN32(DWORD error) noexcept
{
    return static_cast<HRESULT>(error) <= 0 ? static_cast<HRESULT>(error)
                                            : static_cast<HRESULT>((error & 0xFFFFU) | 0x80070000U);
}

DWORD GetLastError() noexcept;
void SetLastError(DWORD error) noexcept;
