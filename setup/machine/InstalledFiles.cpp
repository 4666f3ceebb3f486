#include "InstalledFiles.h"

#include "FileSwap.h"
#include "Payload.h"
#include "RandomName.h"
#include "Utf8.h"

#include <windows.h>

#include <algorithm>

namespace vqrx::setup::v0 {
namespace {

using client::v0::Wide;

void RemoveInstalledFile(const std::string& folder, const std::string& name)
{
    const std::string path = std::string(folder).append("\\").append(name);
    if (DeleteFileW(Wide(path).c_str()) != FALSE || GetLastError() == ERROR_FILE_NOT_FOUND ||
        GetLastError() == ERROR_PATH_NOT_FOUND) {
        return;
    }
    const std::string aside = folder + "\\" + RandomName("~removed-") + ".exe";
    const bool moved = MoveFileExW(Wide(path).c_str(), Wide(aside).c_str(), 0) != FALSE;
    DeleteOrLater(moved ? aside : path);
}

} // namespace

void RemoveInstalledFiles(const std::string& folder, const std::vector<std::string>& names)
{
    std::vector<std::string> inside;
    for (const std::string& name : names) {
        if (IsNameBelow(name)) {
            RemoveInstalledFile(folder, name);
            const std::vector<std::string> more = FoldersOfName(name);
            inside.insert(inside.end(), more.begin(), more.end());
        }
    }
    std::sort(inside.rbegin(), inside.rend()); // "sdk\src" comes before "sdk"
    for (const std::string& one : inside) {
        RemoveEmptyFolder(std::string(folder).append("\\").append(one), false);
    }
    RemoveEmptyFolder(folder, true);
}

} // namespace vqrx::setup::v0
