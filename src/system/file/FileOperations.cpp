#include <windows.h>

#include "file/FileOperations.h"

#include "file/DirectoryListing.h"
#include "file/FileAttributes.h"

#include <stdexcept>

namespace vqrx::system::file::v2 {
namespace {

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

} // namespace

void CreateDirectory(const File& dir)
{
    if (CreateDirectoryA(dir.Path().c_str(), nullptr) == FALSE) {
        Raise("create directory", dir, GetLastError());
    }
}

void CreateDirectories(const File& dir)
{
    switch (KindOf(dir)) {
    case FileKind::directory:
        return;
    case FileKind::file:
        RemoveFile(dir);
        break;
    case FileKind::nothing:
        if (dir.Components().size() > 1) {
            CreateDirectories(dir.Parent());
        }
        break;
    }
    CreateDirectory(dir);
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
    case FileKind::nothing:
        return;
    case FileKind::directory:
        RemoveDirectory(f);
        return;
    case FileKind::file:
        RemoveFile(f);
        return;
    }
}

void CopyTo(const File& source, const std::string& destinationDir)
{
    const File target(destinationDir + "\\" + source.Components().back());
    if (KindOf(source) == FileKind::file) {
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
