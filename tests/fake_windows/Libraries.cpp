// Libraries of Windows: a machine without any.
#include <libloaderapi.h>

#include <cwchar>

HMODULE LoadLibraryExW(LPCWSTR, HANDLE, DWORD)
{
    return nullptr;
}

FARPROC GetProcAddress(HMODULE, LPCSTR)
{
    return nullptr;
}

UINT GetSystemDirectoryW(LPWSTR buffer, UINT size)
{
    constexpr const wchar_t* kFolder = L"C:\\windows\\system32";
    const auto length = static_cast<UINT>(std::wcslen(kFolder));
    if (size <= length) {
        return length + 1;
    }
    std::wmemcpy(buffer, kFolder, length + 1);
    return length;
}
