#include "log_perf/ring/SetAside.h"

#if defined(_WIN32)
#include <windows.h>
#endif

#include <cstdio>
#include <fstream>

namespace vqrx::log::log_perf::v2 {
namespace {

bool Rename(const std::string& path, const std::string& newPath) noexcept
{
#if defined(_WIN32)
    return MoveFileExA(path.c_str(), newPath.c_str(), MOVEFILE_REPLACE_EXISTING) != FALSE;
#else
    return std::rename(path.c_str(), newPath.c_str()) == 0;
#endif
}

// Windows replaces, empties and removes no file that has this attribute.
void ClearReadOnly([[maybe_unused]] const std::string& path) noexcept
{
#if defined(_WIN32)
    const DWORD attributes = GetFileAttributesA(path.c_str());
    if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_READONLY) != 0) {
        SetFileAttributesA(path.c_str(), attributes & ~DWORD{FILE_ATTRIBUTE_READONLY});
    }
#endif
}

bool Write(const std::string& path, const std::string& newPath)
{
    std::ifstream from(path, std::ios::binary);
    std::ofstream to(newPath, std::ios::binary | std::ios::trunc);
    to << from.rdbuf() << std::flush;
    return from.is_open() && to;
}

// The file at newPath is replaced only after the copy is complete.
bool Copy(const std::string& path, const std::string& newPath)
{
    const std::string unfinished = newPath + ".tmp";
    // A link or a second name of another file may be there: the copy would be written into it.
    std::remove(unfinished.c_str()); // NOLINT(cert-err33-c): may not exist
    if (Write(path, unfinished) && Rename(unfinished, newPath)) {
        return true;
    }
    std::remove(unfinished.c_str()); // NOLINT(cert-err33-c): may not exist
    return false;
}

} // namespace

bool SetAside(const std::string& path, const std::string& newPath)
{
    ClearReadOnly(newPath);
    if (Rename(path, newPath)) {
        return true;
    }
    ClearReadOnly(path);
    // Opening the file first saves a copy that would be of no use.
    return std::fstream(path, std::ios::binary | std::ios::in | std::ios::out).is_open() &&
           Copy(path, newPath) && std::ofstream(path, std::ios::binary | std::ios::trunc).is_open();
}

} // namespace vqrx::log::log_perf::v2
