#include "NewFile.h"

#include "win32/UniqueHandle.h"

#include <windows.h>

#include <algorithm>
#include <cstddef>

namespace vqrx::client::v0 {
namespace {

constexpr std::size_t kMostAtOnce = 1U << 20U; // bytes

bool WriteToHandle(HANDLE file, std::string_view content)
{
    while (!content.empty()) {
        DWORD written = 0;
        const auto part = static_cast<DWORD>(std::min(content.size(), kMostAtOnce));
        if (WriteFile(file, content.data(), part, &written, nullptr) == FALSE || written == 0) {
            return false;
        }
        content.remove_prefix(written);
    }
    return true;
}

} // namespace

bool WriteNewFile(const std::filesystem::path& path, std::string_view content)
{
    // Without the flag, Windows would follow a link that leads nowhere, and make the file there.
    const system::win32::v1::UniqueKernelHandle file(
        CreateFileW(path.c_str(), GENERIC_WRITE | DELETE, 0, nullptr, CREATE_NEW,
                    FILE_ATTRIBUTE_NORMAL | FILE_FLAG_OPEN_REPARSE_POINT, nullptr));
    if (!file) {
        return false;
    }
    if (!WriteToHandle(file.Get(), content)) {
        FILE_DISPOSITION_INFO remove{TRUE}; // by its handle: the name may be another file's by now
        SetFileInformationByHandle(file.Get(), FileDispositionInfo, &remove, sizeof remove);
        return false;
    }
    return true;
}

} // namespace vqrx::client::v0
