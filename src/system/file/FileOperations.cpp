#include <windows.h>

#include "file/FileOperations.h"

#include "file/DirectoryListing.h"
#include "file/FileAttributes.h"
#include "file/FileIdentity.h"

#include <cstddef>
#include <stdexcept>
#include <string>
#include <vector>

namespace vqrx::system::file::v2 {
namespace {

// The longest path in characters, as Microsoft documents it for the wide functions. The ANSI
// functions accept no longer one.
constexpr std::size_t kLongestPath = 32767;

[[noreturn]] void Raise(const char* what, const File& file, DWORD error)
{
    throw FileError(std::string("could not ") + what + " [" + file.Path() + "]: Win32 error " +
                    std::to_string(error));
}

void RemoveEmptyDirectory(const File& dir)
{
    if (RemoveDirectoryA(dir.Path().c_str()) == FALSE) {
        Raise("remove directory", dir, GetLastError());
    }
}

void RemoveTree(const File& entry, bool isDirectory)
{
    if (!isDirectory) {
        RemoveFile(entry);
        return;
    }
    if (!IsLink(entry)) { // the target of a link does not belong to this tree
        ForEachEntry(entry, RemoveTree);
    }
    RemoveEmptyDirectory(entry);
}

// Returns where the levels of a path end: those of "C:\a\bc" are "C:", "C:\a" and "C:\a\bc", so
// the result is 2, 4, 7.
std::vector<std::size_t> LevelEnds(const File& dir)
{
    std::vector<std::size_t> ends;
    std::size_t end = 0;
    for (const std::string& component : dir.Components()) {
        end += (ends.empty() ? 0 : 1) + component.size();
        ends.push_back(end);
    }
    return ends;
}

// Refuses a copy that would remove its source, or that would never end.
// @throws std::runtime_error  as CopyTo
void RefuseToCopyIntoItself(const File& source, const File& target, bool isFile)
{
    // A file is copied after its target was removed. A folder is listed while its target grows.
    const bool refused = isFile ? LeadsInto(source, target) : LeadsInto(target, source);
    if (refused) {
        throw std::runtime_error("cannot copy " + source.Path() + " to " + target.Path());
    }
}

} // namespace

void CreateDirectory(const File& dir)
{
    if (CreateDirectoryA(dir.Path().c_str(), nullptr) == FALSE) {
        Raise("create directory", dir, GetLastError());
    }
}

void CreateDirectories(const File& dir)
{
    const std::string& path = dir.Path();
    const std::vector<std::size_t> ends = LevelEnds(dir);
    std::size_t existing = ends.size(); // the number of levels that exist
    while (existing != 0) {
        const std::string level = path.substr(0, ends[existing - 1]);
        const FileKind kind = level.size() > kLongestPath ? FileKind::kNothing : KindOfPath(level);
        if (kind == FileKind::kDirectory) {
            break;
        }
        --existing;
        if (kind == FileKind::kFile) {
            RemoveFile(File(level));
            break;
        }
    }
    for (; existing != ends.size(); ++existing) {
        CreateDirectory(File(path.substr(0, ends[existing])));
    }
}

void RemoveFile(const File& file)
{
    if (DeleteFileA(file.Path().c_str()) == FALSE) {
        Raise("remove file", file, GetLastError());
    }
}

void RemoveDirectory(const File& dir)
{
    if (!IsLink(dir)) {
        ForEachEntry(dir, RemoveTree);
    }
    RemoveEmptyDirectory(dir);
}

void Remove(const File& f)
{
    switch (KindOf(f)) {
    case FileKind::kNothing:
        return;
    case FileKind::kDirectory:
        RemoveDirectory(f);
        return;
    case FileKind::kFile:
        RemoveFile(f);
        return;
    }
}

void CopyTo(const File& source, const std::string& destinationDir)
{
    const File target(destinationDir + "\\" + source.Components().back());
    const bool isFile = KindOf(source) == FileKind::kFile;
    RefuseToCopyIntoItself(source, target, isFile);
    if (isFile) {
        Remove(target);
        if (CopyFileA(source.Path().c_str(), target.Path().c_str(), FALSE) == FALSE) {
            throw std::runtime_error("cannot copy " + source.Path() + " to " + target.Path());
        }
        return;
    }
    CreateDirectories(target);
    EnumerateDirectory(source,
                       [&target](const File& entry, bool) { CopyTo(entry, target.Path()); });
}

} // namespace vqrx::system::file::v2
