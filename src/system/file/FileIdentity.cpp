#include "file/FileIdentity.h"

#include "win32/UniqueHandle.h"

#include <windows.h>

#include <cstddef>
#include <optional>
#include <string>

namespace vqrx::system::file::v2 {
namespace {

// The numbers by which Windows tells the entries of all disks apart.
struct Identity {
    DWORD volume = 0;
    DWORD indexHigh = 0;
    DWORD indexLow = 0;

    bool operator==(const Identity&) const = default;
};

// @return empty if there is no such entry, or Windows refuses to look
std::optional<Identity> IdentityOf(const std::string& path)
{
    const win32::v1::UniqueKernelHandle entry(
        CreateFileA(path.c_str(), FILE_READ_ATTRIBUTES,
                    FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING,
                    FILE_FLAG_BACKUP_SEMANTICS, nullptr)); // this flag opens folders too
    BY_HANDLE_FILE_INFORMATION found{};
    if (!entry || GetFileInformationByHandle(entry.Get(), &found) == FALSE) {
        return std::nullopt;
    }
    return Identity{found.dwVolumeSerialNumber, found.nFileIndexHigh, found.nFileIndexLow};
}

// @return the path from the root of its disk on, without ".."; empty if Windows cannot complete it
std::string FullPath(const std::string& path)
{
    std::string full(GetFullPathNameA(path.c_str(), 0, nullptr, nullptr), '\0');
    full.resize(
        GetFullPathNameA(path.c_str(), static_cast<DWORD>(full.size()), full.data(), nullptr));
    return full;
}

} // namespace

bool LeadsInto(const File& path, const File& entry)
{
    const std::optional<Identity> sought = IdentityOf(entry.Path());
    if (!sought) {
        return false;
    }
    std::string level = FullPath(path.Path());
    while (level.find_first_not_of('\\') != std::string::npos) {
        const bool isDrive = level.back() == ':'; // "C:" alone is the current folder of the drive
        if (IdentityOf(isDrive ? level + '\\' : level) == sought) {
            return true;
        }
        const std::size_t separator = level.find_last_of('\\');
        level.resize(separator == std::string::npos ? 0 : separator);
    }
    return false;
}

} // namespace vqrx::system::file::v2
