#include "RemoveTree.h"

#include "win32/UniqueHandle.h"

#include <windows.h>

#include <string>
#include <string_view>
#include <vector>

namespace vqrx::kit {
namespace {

constexpr DWORD kRemovalPollMs = 50;

// The C library opens no folder whose path has more than 260 characters, even with the prefix
// "\\?\", so std::filesystem::remove_all leaves such folders.
// @return the entries of a folder, without the two that lead to itself and upwards
std::vector<WIN32_FIND_DATAW> EntriesOf(const std::wstring& folder)
{
    std::vector<WIN32_FIND_DATAW> entries;
    WIN32_FIND_DATAW found{};
    const system::win32::v1::UniqueFindHandle search(
        FindFirstFileW((folder + L"\\*").c_str(), &found));
    for (BOOL more = search ? TRUE : FALSE; more != FALSE;
         more = FindNextFileW(search.Get(), &found)) {
        const std::wstring_view name = found.cFileName;
        if (name != L"." && name != L"..") {
            entries.push_back(found);
        }
    }
    return entries;
}

void RemoveFolder(const std::wstring& folder)
{
    for (const WIN32_FIND_DATAW& entry : EntriesOf(folder)) {
        const std::wstring path = folder + L"\\" + entry.cFileName;
        const bool isFolder = (entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
        const bool isLink = (entry.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
        if (isFolder && !isLink) {
            RemoveFolder(path);
        } else if (isFolder) {
            RemoveDirectoryW(path.c_str());
        } else {
            SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_NORMAL);
            DeleteFileW(path.c_str());
        }
    }
    RemoveDirectoryW(folder.c_str());
}

} // namespace

bool RemoveTree(const std::filesystem::path& folder)
{
    const std::wstring path = L"\\\\?\\" + folder.wstring();
    RemoveFolder(path);
    return GetFileAttributesW(path.c_str()) == INVALID_FILE_ATTRIBUTES;
}

bool RemoveTreeWithin(const std::filesystem::path& folder, unsigned limitMs)
{
    const ULONGLONG end = GetTickCount64() + limitMs;
    while (!RemoveTree(folder)) {
        if (GetTickCount64() >= end) {
            return false;
        }
        Sleep(kRemovalPollMs); // Windows has no event for a file that is closed
    }
    return true;
}

} // namespace vqrx::kit
