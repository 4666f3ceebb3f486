#include "RecorderLock.h"

#include "LockFile.h"

#include <windows.h>

#include <stdexcept>

namespace vqrx::client::v0 {

struct RecorderLock::File {
    system::win32::v1::UniqueKernelHandle handle;
};

RecorderLock::RecorderLock(const std::string& folder, std::uint32_t limitMs)
    : file_(std::make_unique<File>())
{
    const std::string path = folder + "\\recorder.lock";
    file_->handle = OpenLockFileWithin(path, limitMs);
    if (!file_->handle) {
        const DWORD error = GetLastError();
        throw std::runtime_error(
            folder + " cannot be written: " +
            (error == ERROR_SHARING_VIOLATION
                 ? "another recorder holds " + path
                 : path + " cannot be made (Windows error " + std::to_string(error) + ")"));
    }
}

RecorderLock::~RecorderLock() = default;

} // namespace vqrx::client::v0
