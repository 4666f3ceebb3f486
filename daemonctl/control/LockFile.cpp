#include "LockFile.h"

#include "Utf8.h"

#include <windows.h>

namespace vqrx::client::v0 {

system::win32::v1::UniqueKernelHandle OpenLockFile(const std::string& path)
{
    const std::wstring name = Wide(path);
    return system::win32::v1::UniqueKernelHandle(
        CreateFileW(name.c_str(), GENERIC_WRITE, 0, nullptr, OPEN_ALWAYS,
                    FILE_FLAG_DELETE_ON_CLOSE | FILE_FLAG_OPEN_REPARSE_POINT, nullptr));
}

} // namespace vqrx::client::v0
