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

bool IsOnDisk(const std::string& path)
{
    return GetFileAttributesW(Wide(path).c_str()) != INVALID_FILE_ATTRIBUTES;
}

std::string FolderOf(const std::string& path)
{
    constexpr std::size_t kDrive = 2;
    const std::size_t end = path.rfind('\\');
    return end == std::string::npos ? std::string() : path.substr(0, end == kDrive ? end + 1 : end);
}

} // namespace vqrx::setup::v0
