#include "LockFile.h"

#include "Utf8.h"

#include <windows.h>

namespace vqrx::client::v0 {
namespace {

constexpr DWORD kOpenLockAgainMs = 100;

} // namespace

system::win32::v1::UniqueKernelHandle OpenLockFile(const std::string& path)
{
    const std::wstring name = Wide(path);
    return system::win32::v1::UniqueKernelHandle(
        CreateFileW(name.c_str(), GENERIC_WRITE, 0, nullptr, OPEN_ALWAYS,
                    FILE_FLAG_DELETE_ON_CLOSE | FILE_FLAG_OPEN_REPARSE_POINT, nullptr));
}

system::win32::v1::UniqueKernelHandle OpenLockFileWithin(const std::string& path,
                                                         std::uint32_t limitMs)
{
    for (const ULONGLONG start = GetTickCount64();; Sleep(kOpenLockAgainMs)) {
        system::win32::v1::UniqueKernelHandle file = OpenLockFile(path);
        if (file) {
            return file;
        }
        const DWORD error = GetLastError();
        // Windows refuses access to a file that it is about to delete, and to one without rights.
        const bool mayPass = error == ERROR_SHARING_VIOLATION || error == ERROR_ACCESS_DENIED;
        if (!mayPass || GetTickCount64() - start >= limitMs) {
            SetLastError(error);
            return file;
        }
    }
}

} // namespace vqrx::client::v0
