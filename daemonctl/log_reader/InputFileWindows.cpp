#include "InputFile.h"
#include "Utf8.h"
#include "win32/UniqueHandle.h"

#include <windows.h>

#include <algorithm>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace vqrx::client::v0 {
namespace {

using system::win32::v1::UniqueKernelHandle;

constexpr std::size_t kLargestRead = std::size_t{1024} * 1024; // bytes

[[noreturn]] void ThrowUnreadable(const std::string& path, DWORD error)
{
    throw std::runtime_error(
        path + " cannot be read: " + std::system_category().message(static_cast<int>(error)));
}

class WindowsFile : public InputFile {
public:
    WindowsFile(std::string path, UniqueKernelHandle file, std::uint64_t size) noexcept
        : path_(std::move(path))
        , file_(std::move(file))
        , size_(size)
    {
    }

    std::uint64_t Size() const noexcept override { return size_; }

    std::size_t ReadAt(std::uint64_t offset, std::span<char> buffer) override
    {
        std::size_t done = 0;
        while (done < buffer.size()) {
            OVERLAPPED position = {};
            position.Offset = static_cast<DWORD>(offset + done);
            position.OffsetHigh = static_cast<DWORD>((offset + done) >> 32U);
            const DWORD wanted = static_cast<DWORD>(std::min(buffer.size() - done, kLargestRead));
            DWORD got = 0;
            if (ReadFile(file_.Get(), buffer.data() + done, wanted, &got, &position) == FALSE) {
                const DWORD error = GetLastError();
                if (error != ERROR_HANDLE_EOF) {
                    ThrowUnreadable(path_, error);
                }
                break;
            }
            if (got == 0) {
                break;
            }
            done += got;
        }
        return done;
    }

private:
    std::string path_;
    UniqueKernelHandle file_;
    std::uint64_t size_;
};

} // namespace

std::unique_ptr<InputFile> InputFile::Open(const std::string& path)
{
    UniqueKernelHandle file(CreateFileW(Wide(path).c_str(), GENERIC_READ,
                                        FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                        nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file) {
        const DWORD error = GetLastError();
        ThrowUnreadable(path, error);
    }
    LARGE_INTEGER size = {};
    if (GetFileType(file.Get()) != FILE_TYPE_DISK) {
        ThrowUnreadable(path, ERROR_NOT_SUPPORTED);
    }
    if (GetFileSizeEx(file.Get(), &size) == FALSE) {
        const DWORD error = GetLastError();
        ThrowUnreadable(path, error);
    }
    return std::make_unique<WindowsFile>(path, std::move(file),
                                         static_cast<std::uint64_t>(size.QuadPart));
}

} // namespace vqrx::client::v0
