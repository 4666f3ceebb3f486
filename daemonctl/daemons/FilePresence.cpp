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

} // namespace vqrx::client::v0
