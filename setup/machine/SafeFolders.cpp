#include "SafeFolders.h"

#include "ObjectRights.h"
#include "SetupError.h"
#include "SystemPlaces.h"
#include "Utf8.h"

#include <windows.h>

#include <utility>

namespace vqrx::setup::v0 {
namespace {

using client::v0::FolderUse;
using client::v0::Wide;

bool IsFolder(const std::string& path)
{
    const DWORD attributes = GetFileAttributesW(Wide(path).c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

std::string Remedy(const std::string& path)
{
    return "Nothing was changed. Whoever can change it can become administrator through the "
           "supervisor.\nLook at what lies there, then set its rights as administrator:\n"
           "  icacls \"" +
           path +
           "\" /setowner *S-1-5-32-544\n"
           "  icacls \"" +
           path +
           "\" /inheritance:r /grant:r *S-1-5-18:(OI)(CI)F *S-1-5-32-544:(OI)(CI)F "
           "*S-1-5-32-545:(OI)(CI)RX\n"
           "Or choose another folder, or accept the risk with /ALLOWWEAK.";
}

} // namespace

SafeFolders::SafeFolders(std::string accountSid, bool allowWeak)
    : accountSid_(std::move(accountSid))
    , allowWeak_(allowWeak)
    , trusted_(client::v0::TrustedAdministrators())
{
    if (!accountSid_.empty()) {
        trusted_.insert(accountSid_);
    }
}

bool SafeFolders::Prepare(const std::string& path, FolderUse use)
{
    if (IsOnDisk(path)) {
        if (!IsFolder(path)) {
            throw SetupError(path + " is no folder.");
        }
        CheckPath(path, false);
        return false;
    }
    const std::string above = FolderOf(path);
    if (above.empty() || above == path) {
        throw SetupError(path + " is no full path of a folder.");
    }
    if (IsOnDisk(above)) {
        CheckPath(above, true);
    } else {
        Prepare(above, FolderUse::kPrograms);
    }
    Make(path, use);
    CheckPath(path, false); // a file system without rights does not keep them
    return true;
}

void SafeFolders::Check(const std::string& path) const
{
    if (IsOnDisk(path)) {
        CheckPath(path, false);
    }
}

void SafeFolders::RemoveMade() noexcept
{
    for (; !made_.empty(); made_.pop_back()) {
        RemoveDirectoryW(Wide(made_.back()).c_str());
    }
}

void SafeFolders::Make(const std::string& path, FolderUse use)
{
    const std::uint32_t error = client::v0::MakeProtectedFolder(path, use, accountSid_);
    if (error == ERROR_ALREADY_EXISTS) {
        throw SetupError("Somebody else made " + path + " just now. Try again.");
    }
    if (error != ERROR_SUCCESS) {
        throw SetupError("The folder " + path + " cannot be made (Windows error " +
                         std::to_string(error) + ").");
    }
    made_.push_back(path);
}

void SafeFolders::CheckPath(const std::string& path, bool onlyAbove) const
{
    if (allowWeak_) {
        return;
    }
    const std::vector<std::string> found = onlyAbove
                                               ? client::v0::WeaknessesOfParentPath(path, trusted_)
                                               : client::v0::WeaknessesOfPath(path, trusted_);
    if (found.empty()) {
        return;
    }
    std::string text = path + " is not safe:\n";
    for (const std::string& weakness : found) {
        text += "  " + weakness + "\n";
    }
    throw SetupError(text + Remedy(path));
}

} // namespace vqrx::setup::v0
