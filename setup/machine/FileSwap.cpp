#include "FileSwap.h"

#include "ContentToDisk.h"
#include "ProtectedObjects.h"
#include "RandomName.h"
#include "SetupError.h"
#include "SystemPlaces.h"
#include "Utf8.h"
#include "win32/UniqueHandle.h"

#include <windows.h>

#include <algorithm>
#include <exception>
#include <iterator>

namespace vqrx::setup::v0 {
namespace {

using client::v0::Wide;
using system::win32::v1::UniqueKernelHandle;

[[noreturn]] void FailForFile(const std::string& what, const std::string& path, DWORD error)
{
    throw SetupError("The file " + path + " cannot be " + what + " (Windows error " +
                     std::to_string(error) + ").");
}

// A file that is on the disk before its name changes: a power failure must not leave an empty
// program.
void WriteNewFile(const std::string& path, std::string_view content)
{
    const UniqueKernelHandle file(CreateFileW(Wide(path).c_str(), GENERIC_WRITE | DELETE, 0,
                                              nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr));
    const DWORD error = file ? client::v0::WriteToDisk(file.Get(), content) : GetLastError();
    if (error != ERROR_SUCCESS) {
        FailForFile("written", path, error);
    }
}

// Makes the folders of a name. @return those that did not exist
std::vector<std::string> MakeFoldersOf(const std::string& base, const std::string& name)
{
    std::vector<std::string> made;
    for (const std::string& folder : FoldersOfName(name)) {
        const std::string path = std::string(base).append("\\").append(folder);
        if (CreateDirectoryW(Wide(path).c_str(), nullptr) != FALSE) {
            made.push_back(path);
        } else if (const DWORD error = GetLastError(); error != ERROR_ALREADY_EXISTS) {
            FailForFile("made", path, error);
        }
    }
    return made;
}

} // namespace

std::vector<std::string> FoldersOfName(const std::string& name)
{
    std::vector<std::string> folders;
    for (std::size_t at = name.find('\\'); at != std::string::npos; at = name.find('\\', at + 1)) {
        folders.push_back(name.substr(0, at));
    }
    return folders;
}

std::vector<std::string> FoldersInside(const std::vector<std::string>& names)
{
    std::vector<std::string> folders;
    for (const std::string& name : names) {
        const std::vector<std::string> more = FoldersOfName(name);
        folders.insert(folders.end(), more.begin(), more.end());
    }
    std::sort(folders.rbegin(), folders.rend()); // "sdk\src" comes before "sdk"
    folders.erase(std::unique(folders.begin(), folders.end()), folders.end());
    return folders;
}

void DeleteOrLater(const std::string& path) noexcept
{
    const std::wstring wide = Wide(path);
    if (DeleteFileW(wide.c_str()) == FALSE && GetLastError() != ERROR_FILE_NOT_FOUND) {
        MoveFileExW(wide.c_str(), nullptr, MOVEFILE_DELAY_UNTIL_REBOOT);
    }
}

std::uint32_t MoveWhenReleased(const std::string& from, const std::string& to,
                               std::uint32_t& patienceMs)
{
    constexpr std::uint32_t kPauseMs = 100;
    while (MoveFileExW(Wide(from).c_str(), Wide(to).c_str(), 0) == FALSE) {
        const DWORD error = GetLastError();
        if (error != ERROR_SHARING_VIOLATION || patienceMs < kPauseMs) {
            return error;
        }
        Sleep(kPauseMs);
        patienceMs -= kPauseMs;
    }
    return ERROR_SUCCESS;
}

void RemoveEmptyFolder(const std::string& path, bool later) noexcept
{
    const std::wstring wide = Wide(path);
    if (RemoveDirectoryW(wide.c_str()) == FALSE && later && IsOnDisk(path)) {
        MoveFileExW(wide.c_str(), nullptr, MOVEFILE_DELAY_UNTIL_REBOOT);
    }
}

void FileSwap::Unpack(const std::vector<PayloadFile>& files)
{
    const std::string fresh = folder_ + "\\" + RandomName("~new-");
    if (const std::uint32_t error =
            client::v0::MakeProtectedFolder(fresh, client::v0::FolderUse::kPrograms, std::string());
        error != ERROR_SUCCESS) {
        FailForFile("made", fresh, error);
    }
    newFolder_ = fresh;
    for (const PayloadFile& file : files) {
        names_.push_back(file.name);
        MakeFoldersOf(newFolder_, file.name);
        WriteNewFile(newFolder_ + "\\" + file.name, file.content);
    }
}

void FileSwap::SwapIn(const std::vector<std::string>& former)
{
    std::vector<std::string> replaced = names_;
    std::copy_if(former.begin(), former.end(), std::back_inserter(replaced),
                 [&](const std::string& name) {
                     return IsNameBelow(name) &&
                            std::find(names_.begin(), names_.end(), name) == names_.end();
                 });
    swapped_ = true;
    try {
        for (const std::string& name : replaced) {
            SetAside(name);
        }
        for (const std::string& name : names_) {
            const std::vector<std::string> made = MakeFoldersOf(folder_, name);
            madeFolders_.insert(madeFolders_.end(), made.begin(), made.end());
            Move(newFolder_ + "\\" + name, folder_ + "\\" + name);
        }
    } catch (const std::exception& error) {
        const std::string left = TakeBack();
        throw SetupError(left.empty() ? error.what() : error.what() + ("\n" + left));
    }
}

std::string FileSwap::TakeBack() noexcept
{
    std::string left;
    for (; !movements_.empty(); movements_.pop_back()) {
        const auto& [from, to] = movements_.back();
        const std::uint32_t error = MoveWhenReleased(to, from, patienceMs_);
        if (error != ERROR_SUCCESS) {
            left.append("The file ").append(to).append(" could not be moved back to ").append(from);
            left.append(" (Windows error ").append(std::to_string(error)).append(").\n");
        }
    }
    for (; !madeFolders_.empty(); madeFolders_.pop_back()) {
        RemoveEmptyFolder(madeFolders_.back(), false);
    }
    if (swapped_ && !oldFolder_.empty()) {
        for (const std::string& folder : FoldersInside(aside_)) {
            RemoveEmptyFolder(oldFolder_ + "\\" + folder, false);
        }
        RemoveEmptyFolder(oldFolder_, false);
    }
    oldFolder_.clear();
    aside_.clear();
    swapped_ = false;
    return left;
}

void FileSwap::Keep() noexcept
{
    movements_.clear();
    madeFolders_.clear();
    swapped_ = false;
    for (const std::string& name : aside_) {
        DeleteOrLater(oldFolder_ + "\\" + name);
    }
    for (const std::string& folder : FoldersInside(aside_)) {
        RemoveEmptyFolder(oldFolder_ + "\\" + folder, true);
        RemoveEmptyFolder(folder_ + "\\" + folder, false); // the new version may not have it
    }
    if (!oldFolder_.empty()) {
        RemoveEmptyFolder(oldFolder_, true);
    }
    for (const std::string& folder : FoldersInside(names_)) {
        RemoveEmptyFolder(newFolder_ + "\\" + folder, false);
    }
    RemoveEmptyFolder(newFolder_, false);
    newFolder_.clear();
}

std::string FileSwap::PlaceOf(const std::string& name) const
{
    return (swapped_ || newFolder_.empty() ? folder_ : newFolder_) + "\\" + name;
}

void FileSwap::Move(const std::string& from, const std::string& to)
{
    if (MoveFileExW(Wide(from).c_str(), Wide(to).c_str(), MOVEFILE_WRITE_THROUGH) == FALSE) {
        FailForFile("replaced", to, GetLastError());
    }
    movements_.emplace_back(from, to);
}

void FileSwap::SetAside(const std::string& name)
{
    if (!IsOnDisk(folder_ + "\\" + name)) {
        return;
    }
    if (oldFolder_.empty()) {
        const std::string fresh = folder_ + "\\" + RandomName("~old-");
        if (const std::uint32_t error = client::v0::MakeProtectedFolder(
                fresh, client::v0::FolderUse::kPrograms, std::string());
            error != ERROR_SUCCESS) {
            FailForFile("made", fresh, error);
        }
        oldFolder_ = fresh;
    }
    aside_.push_back(name);
    MakeFoldersOf(oldFolder_, name);
    Move(folder_ + "\\" + name, oldFolder_ + "\\" + name);
}

void FileSwap::Discard() noexcept
{
    static_cast<void>(TakeBack());
    if (newFolder_.empty()) {
        return;
    }
    for (const std::string& name : names_) {
        DeleteOrLater(newFolder_ + "\\" + name);
    }
    for (const std::string& folder : FoldersInside(names_)) {
        RemoveEmptyFolder(newFolder_ + "\\" + folder, true);
    }
    RemoveEmptyFolder(newFolder_, true);
    newFolder_.clear();
}

} // namespace vqrx::setup::v0
