// Listing, copying and removing of folders, compared with plain loops over the functions of
// Windows.
#include <windows.h>

#include "Measure.h"
#include "file/DirectoryListing.h"
#include "file/FileOperations.h"
#include "win32/UniqueHandle.h"

#include <cstring>
#include <stdexcept>
#include <string>

namespace vqrx::bench {
namespace {

using system::file::v2::File;

template <typename Visit>
void PlainList(const std::string& folder, const Visit& visit)
{
    WIN32_FIND_DATAA found{};
    const system::win32::v1::UniqueFindHandle search(
        FindFirstFileA((folder + "\\*").c_str(), &found));
    if (!search) {
        throw std::runtime_error("cannot list " + folder);
    }
    do {
        if (std::strcmp(found.cFileName, ".") != 0 && std::strcmp(found.cFileName, "..") != 0) {
            visit(folder + "\\" + found.cFileName,
                  (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0);
        }
    } while (FindNextFileA(search.Get(), &found) != FALSE);
}

void PlainCopy(const std::string& from, const std::string& to)
{
    CreateDirectoryA(to.c_str(), nullptr);
    PlainList(from, [&](const std::string& path, bool isFolder) {
        const std::string target = to + path.substr(path.rfind('\\'));
        if (isFolder) {
            PlainCopy(path, target);
        } else {
            CopyFileA(path.c_str(), target.c_str(), FALSE);
        }
    });
}

void PlainRemove(const std::string& folder)
{
    PlainList(folder, [](const std::string& path, bool isFolder) {
        if (isFolder) {
            PlainRemove(path);
        } else {
            DeleteFileA(path.c_str());
        }
    });
    RemoveDirectoryA(folder.c_str());
}

} // namespace

void FileBench(const Settings& settings)
{
    std::size_t count = 0;
    const Stopwatch plainList;
    PlainList(settings.manyFiles, [&](const std::string&, bool) { ++count; });
    Report("files.list_ms.plain", plainList.Seconds() * 1e3);
    const Stopwatch ourList;
    system::file::v2::EnumerateDirectory(File(settings.manyFiles),
                                         [&](const File&, bool) { --count; });
    Report("files.list_ms.ours", ourList.Seconds() * 1e3);
    if (count != 0) {
        throw std::runtime_error("the listings differ");
    }
    const std::string plain = settings.scratch + "\\plain";
    const Stopwatch plainCopy;
    PlainCopy(settings.tree, plain);
    Report("files.copy_ms.plain", plainCopy.Seconds() * 1e3);
    const std::string ours = settings.scratch + "\\ours";
    const Stopwatch ourCopy;
    system::file::v2::CopyTo(File(settings.tree), ours);
    Report("files.copy_ms.ours", ourCopy.Seconds() * 1e3);
    const Stopwatch plainRemove;
    PlainRemove(plain);
    Report("files.remove_ms.plain", plainRemove.Seconds() * 1e3);
    const Stopwatch ourRemove;
    system::file::v2::Remove(File(ours));
    Report("files.remove_ms.ours", ourRemove.Seconds() * 1e3);
}

} // namespace vqrx::bench
