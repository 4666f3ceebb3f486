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

// @param folder      of the programs: a file that is in use goes there, so that the folders below
//                    it become empty
// @param patienceMs  how long to wait for held files, milliseconds; less after the call
// @return the error of Windows; 0: the file is gone, or will be when the machine starts next
std::uint32_t RemoveInstalledFile(const std::string& folder, const std::string& path,
                                  std::uint32_t& patienceMs)
{
    if (DeleteFileW(Wide(path).c_str()) != FALSE || !IsOnDisk(path)) {
        return ERROR_SUCCESS;
    }
    const std::string aside = folder + "\\" + RandomName("~removed-") + ".exe";
    const std::uint32_t error = MoveWhenReleased(path, aside, patienceMs);
    if (error == ERROR_SUCCESS) {
        DeleteOrLater(aside);
    }
    return error;
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
                                              const std::vector<std::string>& names, bool allowWeak,
                                              std::uint32_t patienceMs)
{
    ClearableFolders folders(allowWeak);
    std::vector<std::string> below;
    std::vector<std::string> held;
    for (const std::string& name : names) {
        if (IsNameBelow(name)) {
            const std::string path = std::string(folder).append("\\").append(name);
            if (IsOnDisk(path) && folders.MayClear(FolderOf(path))) {
                if (const std::uint32_t error = RemoveInstalledFile(folder, path, patienceMs)) {
                    held.push_back("The file " + path + " stays: Windows error " +
                                   std::to_string(error) + ". Delete it.");
                }
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
    std::vector<std::string> reasons = folders.TakeReasons();
    reasons.insert(reasons.end(), held.begin(), held.end());
    return reasons;
}

} // namespace vqrx::setup::v0
