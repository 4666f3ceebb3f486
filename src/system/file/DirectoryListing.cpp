#include "file/DirectoryListing.h"

#include "file/DirectoryEntry.h"
#include "file/FileAttributes.h"
#include "win32/UniqueHandle.h"

#include <windows.h>

#include <stdexcept>

namespace vqrx::system::file::v2 {
namespace {

using win32::v1::UniqueFindHandle;

// Whether a path is longer than the ANSI functions accept. A path that the system cannot complete
// counts as too long.
bool IsTooLong(const std::string& path)
{
    const DWORD bytes = GetFullPathNameA(path.c_str(), 0, nullptr, nullptr); // with the final zero
    return bytes == 0 || bytes > MAX_PATH;
}

// Whether a search failed only because the folder does not exist.
bool IsMissing(const File& dir, const std::string& pattern, DWORD error)
{
    // Windows answers ERROR_FILE_NOT_FOUND if no name in the folder matches. It answers
    // ERROR_PATH_NOT_FOUND if the folder is missing, but also if the path is too long.
    return error == ERROR_FILE_NOT_FOUND ||
           (error == ERROR_PATH_NOT_FOUND && KindOf(dir) == FileKind::kNothing &&
            !IsTooLong(pattern));
}

void Visit(const File& dir, const DirectoryEntry& entry, const EntryCallback& callback)
{
    if (entry.name != "." && entry.name != "..") {
        callback(dir.Child(entry.name), (entry.attributes & FILE_ATTRIBUTE_DIRECTORY) != 0);
    }
}

} // namespace

void ForEachEntry(const File& dir, const EntryCallback& callback)
{
    const std::string pattern = dir.Path() + "\\*";
    WIN32_FIND_DATAA first{};
    const UniqueFindHandle search(FindFirstFileA(pattern.c_str(), &first));
    if (!search) {
        const DWORD error = GetLastError();
        if (IsMissing(dir, pattern, error)) {
            return;
        }
        throw FileError("could not enumerate the contents of [" + dir.Path() + "]: Win32 error " +
                        std::to_string(error));
    }
    Visit(dir, EntryFrom(first), callback);
    WIN32_FIND_DATAW next{};
    while (FindNextFileW(search.Get(), &next) != FALSE) {
        Visit(dir, EntryFrom(next), callback);
    }
}

void EnumerateDirectory(const File& dir, const EntryCallback& callback)
{
    if (KindOf(dir) != FileKind::kDirectory) {
        throw std::runtime_error(dir.Path() + " is not a directory");
    }
    ForEachEntry(dir, callback);
}

} // namespace vqrx::system::file::v2
