#include "file/FileAttributes.h"

#include <windows.h>

namespace vqrx::system::file::v2 {

FileKind KindOf(const File& file) noexcept
{
    const DWORD attributes = GetFileAttributesA(file.Path().c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES) {
        return FileKind::nothing;
    }
    return (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0 ? FileKind::directory : FileKind::file;
}

bool IsLink(const File& file) noexcept
{
    const DWORD attributes = GetFileAttributesA(file.Path().c_str());
    return attributes != INVALID_FILE_ATTRIBUTES &&
           (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
}

} // namespace vqrx::system::file::v2
