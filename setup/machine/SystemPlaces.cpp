#include "SystemPlaces.h"

#include "SetupError.h"
#include "Utf8.h"
#include "file/OwnProgram.h"

#include <windows.h>

#include <shlobj.h>

#include <array>

namespace vqrx::setup::v0 {

using client::v0::Utf8;
using client::v0::Wide;

std::string ProgramFilesFolder()
{
    std::array<wchar_t, MAX_PATH> path{};
    if (FAILED(SHGetFolderPathW(nullptr, CSIDL_PROGRAM_FILES, nullptr, SHGFP_TYPE_CURRENT,
                                path.data()))) {
        throw SetupError("Windows names no folder for programs. Name one: /D=FOLDER");
    }
    return Utf8(path.data());
}

std::string SystemFolder()
{
    std::array<wchar_t, MAX_PATH> path{};
    return GetSystemDirectoryW(path.data(), MAX_PATH) != 0 ? Utf8(path.data())
                                                           : "C:\\Windows\\System32";
}

std::string DefaultFirmwareRoot()
{
    if (GetDriveTypeW(L"D:\\") == DRIVE_FIXED) {
        return "D:\\FIRMWARE";
    }
    return SystemFolder().substr(0, 2) + "\\FIRMWARE";
}

std::string OwnProgram()
{
    return Utf8(system::file::v2::PathOfOwnProgram());
}

std::string FullPath(const std::string& path)
{
    const std::wstring given = Wide(path);
    std::wstring full(GetFullPathNameW(given.c_str(), 0, nullptr, nullptr), L'\0');
    full.resize(
        GetFullPathNameW(given.c_str(), static_cast<DWORD>(full.size()), full.data(), nullptr));
    if (full.empty()) {
        throw SetupError("This is no path: " + path);
    }
    constexpr std::size_t kDriveRoot = 3; // "C:\" keeps its separator
    while (full.size() > kDriveRoot && full.back() == L'\\') {
        full.pop_back();
    }
    return Utf8(full);
}

bool IsOnDisk(const std::string& path)
{
    if (GetFileAttributesW(Wide(path).c_str()) != INVALID_FILE_ATTRIBUTES) {
        return true;
    }
    const DWORD error = GetLastError();
    return error != ERROR_FILE_NOT_FOUND && error != ERROR_PATH_NOT_FOUND;
}

std::string FolderOf(const std::string& path)
{
    constexpr std::size_t kDrive = 2;
    const std::size_t end = path.rfind('\\');
    return end == std::string::npos ? std::string() : path.substr(0, end == kDrive ? end + 1 : end);
}

} // namespace vqrx::setup::v0
