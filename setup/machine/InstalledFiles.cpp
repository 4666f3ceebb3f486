#include "InstalledFiles.h"

#include "FileSwap.h"
#include "ObjectRights.h"
#include "Payload.h"
#include "RandomName.h"
#include "SystemPlaces.h"
#include "Utf8.h"

#include <windows.h>

#include <map>
#include <utility>

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

// Says which folders may be cleared by name. Looks at each folder once: it holds many files.
class ClearableFolders {
public:
    explicit ClearableFolders(bool allowWeak)
        : allowWeak_(allowWeak)
    {
    }

    bool MayClear(const std::string& folder)
    {
        if (allowWeak_) {
            return true;
        }
        const auto [found, isNew] = mayClear_.try_emplace(folder, false);
        if (isNew) {
            const std::vector<std::string> weak =
                client::v0::WeaknessesOfPath(folder, client::v0::TrustedAdministrators());
            found->second = weak.empty();
            if (!weak.empty()) {
                reasons_.push_back("The files in " + folder + " stay, because " + weak.front() +
                                   ". Look at what lies there, then delete them.");
            }
        }
        return found->second;
    }

    [[nodiscard]] std::vector<std::string> TakeReasons() { return std::move(reasons_); }

private:
    bool allowWeak_;
    std::map<std::string, bool> mayClear_;
    std::vector<std::string> reasons_;
};

} // namespace

std::vector<std::string> RemoveInstalledFiles(const std::string& folder,
                                              const std::vector<std::string>& names, bool allowWeak)
{
    ClearableFolders folders(allowWeak);
    std::vector<std::string> below;
    for (const std::string& name : names) {
        if (IsNameBelow(name)) {
            const std::string path = std::string(folder).append("\\").append(name);
            if (IsOnDisk(path) && folders.MayClear(FolderOf(path))) {
                RemoveInstalledFile(folder, name);
            }
            below.push_back(name);
        }
    }
    for (const std::string& one : FoldersInside(below)) {
        const std::string path = std::string(folder).append("\\").append(one);
        if (IsOnDisk(path) && folders.MayClear(FolderOf(path))) {
            RemoveEmptyFolder(path, false);
        }
    }
    if (IsOnDisk(folder) && folders.MayClear(folder)) { // also when Windows starts next
        RemoveEmptyFolder(folder, true);
    }
    return folders.TakeReasons();
}

} // namespace vqrx::setup::v0
