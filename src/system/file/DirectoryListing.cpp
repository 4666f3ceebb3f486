#include "file/DirectoryListing.h"

#include "file/FileAttributes.h"
#include "utf/Transcode.h"
#include "win32/UniqueHandle.h"

#include <windows.h>

#include <cstdint>
#include <stdexcept>

namespace vqrx::system::file::v2 {
namespace {

using win32::v1::UniqueFindHandle;

// A find record of the system with its names converted.
struct DirectoryEntry {
    DWORD attributes = 0;
    FILETIME creationTime{};
    FILETIME lastAccessTime{};
    FILETIME lastWriteTime{};
    std::uint64_t size = 0;
    std::string name;
    std::string shortName;
};

template <typename Record>
DirectoryEntry CommonFields(const Record& record)
{
    DirectoryEntry entry;
    entry.attributes = record.dwFileAttributes;
    entry.creationTime = record.ftCreationTime;
    entry.lastAccessTime = record.ftLastAccessTime;
    entry.lastWriteTime = record.ftLastWriteTime;
    entry.size = (static_cast<std::uint64_t>(record.nFileSizeHigh) << 32) | record.nFileSizeLow;
    return entry;
}

DirectoryEntry EntryFrom(const WIN32_FIND_DATAA& record)
{
    DirectoryEntry entry = CommonFields(record);
    entry.name = record.cFileName;
    entry.shortName = record.cAlternateFileName;
    return entry;
}

DirectoryEntry EntryFrom(const WIN32_FIND_DATAW& record)
{
    DirectoryEntry entry = CommonFields(record);
    entry.name = encoding::utf::v1::WideToUtf8(record.cFileName);
    entry.shortName = encoding::utf::v1::WideToUtf8(record.cAlternateFileName);
    return entry;
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
    WIN32_FIND_DATAA first{};
    const UniqueFindHandle search(FindFirstFileA((dir.Path() + "\\*").c_str(), &first));
    if (!search) {
        const DWORD error = GetLastError();
        // Windows answers ERROR_PATH_NOT_FOUND if the folder is missing, and ERROR_FILE_NOT_FOUND
        // if no name in the folder matches.
        if (error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND) {
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
    if (KindOf(dir) != FileKind::directory) {
        throw std::runtime_error(dir.Path() + " is not a directory");
    }
    ForEachEntry(dir, callback);
}

} // namespace vqrx::system::file::v2
