#include "FilePresence.h"

#include "Utf8.h"

#include <windows.h>

namespace vqrx::client::v0 {

FilePresence PresenceOf(const std::string& path)
{
    if (GetFileAttributesW(Wide(path).c_str()) != INVALID_FILE_ATTRIBUTES) {
        return FilePresence::kThere;
    }
    switch (GetLastError()) {
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND:
    case ERROR_INVALID_NAME:
        return FilePresence::kMissing;
    default:
        return FilePresence::kUnknown;
    }
}

bool MayBeThere(const std::string& path)
{
    return PresenceOf(path) != FilePresence::kMissing;
}

bool IsFile(const std::string& path)
{
    const DWORD attributes = GetFileAttributesW(Wide(path).c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0;
}

} // namespace vqrx::client::v0
