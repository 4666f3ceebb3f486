#include "file/FileAttributes.h"

#include "win32/UniqueHandle.h"

#include <windows.h>

namespace vqrx::system::file::v2 {

FileKind KindOf(const File& file) noexcept
{
    return KindOfPath(file.Path());
}

FileKind KindOfPath(const std::string& path) noexcept
{
    const DWORD attributes = GetFileAttributesA(path.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES) {
        return FileKind::kNothing;
    }
    return (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0 ? FileKind::kDirectory : FileKind::kFile;
}

bool IsLink(const File& file) noexcept
{
    const DWORD attributes = GetFileAttributesA(file.Path().c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES || (attributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0) {
        return false;
    }
    WIN32_FIND_DATAA found{};
    const win32::v1::UniqueFindHandle search(FindFirstFileA(file.Path().c_str(), &found));
    const DWORD tag = search ? found.dwReserved0 : 0;
    return tag == 0 || IsReparseTagNameSurrogate(tag);
}

} // namespace vqrx::system::file::v2
