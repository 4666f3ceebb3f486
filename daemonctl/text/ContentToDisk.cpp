#include "ContentToDisk.h"

#include <algorithm>
#include <cstddef>

namespace vqrx::client::v0 {
namespace {

constexpr std::size_t kMostAtOnce = 1U << 20U; // bytes

std::uint32_t Write(HANDLE file, std::string_view content) noexcept
{
    while (!content.empty()) {
        DWORD written = 0;
        const auto part = static_cast<DWORD>(std::min(content.size(), kMostAtOnce));
        if (WriteFile(file, content.data(), part, &written, nullptr) == FALSE) {
            return GetLastError();
        }
        if (written == 0) {
            return ERROR_DISK_FULL;
        }
        content.remove_prefix(written);
    }
    return FlushFileBuffers(file) != FALSE ? 0 : GetLastError();
}

} // namespace

std::uint32_t WriteToDisk(HANDLE newFile, std::string_view content) noexcept
{
    const std::uint32_t error = Write(newFile, content);
    if (error != 0) {
        FILE_DISPOSITION_INFO remove{TRUE};
        SetFileInformationByHandle(newFile, FileDispositionInfo, &remove, sizeof remove);
    }
    return error;
}

} // namespace vqrx::client::v0
