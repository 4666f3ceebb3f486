#include "NewFile.h"

#include "ContentToDisk.h"
#include "win32/UniqueHandle.h"

#include <windows.h>

namespace vqrx::client::v0 {

bool WriteNewFile(const std::filesystem::path& path, std::string_view content)
{
    // Without the flag, Windows would follow a link that leads nowhere, and make the file there.
    const system::win32::v1::UniqueKernelHandle file(
        CreateFileW(path.c_str(), GENERIC_WRITE | DELETE, 0, nullptr, CREATE_NEW,
                    FILE_ATTRIBUTE_NORMAL | FILE_FLAG_OPEN_REPARSE_POINT, nullptr));
    return file && WriteToDisk(file.Get(), content) == 0;
}

} // namespace vqrx::client::v0
