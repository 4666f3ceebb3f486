#include <windows.h>

#include "file/FileOperations.h"

#include "FilesFixture.h"
#include "HostRefusal.h"
#include "ImportPatch.h"
#include "file/FileAttributes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>
#include <vector>

namespace vqrx::test {
namespace {

using namespace system::file::v2;
namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::UnorderedElementsAre;

// The paths that were passed to the system's two functions that remove something.
std::vector<std::string> removed;

BOOL WINAPI NoteRemoval(LPCSTR path)
{
    removed.emplace_back(path);
    return TRUE;
}

void MakeLink(const std::string& link, const std::string& target, DWORD flags)
{
    const bool made = CreateSymbolicLinkA(link.c_str(), target.c_str(), flags) != FALSE;
    const DWORD error = made ? 0 : GetLastError();
    const DWORD attributes = GetFileAttributesA(link.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES || // Wine reports success and makes nothing
        (attributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0) {
        throw HostRefusal("no symbolic link can be made (error " + std::to_string(error) + ")");
    }
}

/// A folder "target" with the file "precious", and a folder "t" with the file "a" and links to
/// both. The host of Wine makes them (make_links.sh), because Wine makes no links; on Windows the
/// test itself does. Nothing is really removed: under Wine the system's functions remove the target
/// of such a link, on Windows the link.
class FileOperationsLinks : public testing::Test {
protected:
    FileOperationsLinks()
    {
        const char* const folder = std::getenv("DM_LINKS");
        folder_ = File(folder != nullptr ? fs::path(folder).make_preferred().string() : MadeHere())
                      .Path() +
                  "\\";
        removed.clear();
        EXPECT_TRUE(IsLink(In("t\\link")));
        EXPECT_EQ(FileKind::kFile, KindOf(In("t\\link\\precious")));
        EXPECT_EQ(FileKind::kFile, KindOf(In("t\\file_link")));
    }

    File In(const std::string& name) const { return File(folder_ + name); }

    std::string MadeHere() const
    {
        const std::string target = own_.File("target");
        fs::create_directory(target);
        fs::create_directory(own_.Path() / "t");
        std::ofstream(fs::path(target) / "precious") << "x";
        std::ofstream(own_.Path() / "t/a") << "x";
        MakeLink(own_.File("t\\link"), target, SYMBOLIC_LINK_FLAG_DIRECTORY);
        MakeLink(own_.File("t\\file_link"), target + "\\precious", 0);
        return own_.Path().string();
    }

    const TempFolder own_;
    std::string folder_;
    ImportPatch removeDirectory_{"RemoveDirectoryA", NoteRemoval};
    ImportPatch deleteFile_{"DeleteFileA", NoteRemoval};
};

// The host cannot create every kind of reparse point. These patches make the folder "odd" look like
// one.
DWORD tagOfOdd = 0;
DWORD(WINAPI* realAttributes)(LPCSTR) = nullptr;
HANDLE(WINAPI* realFindFirst)(LPCSTR, LPWIN32_FIND_DATAA) = nullptr;

bool IsOdd(LPCSTR path)
{
    return std::string_view(path).ends_with("odd");
}

DWORD WINAPI OddAttributes(LPCSTR path)
{
    return realAttributes(path) | (IsOdd(path) ? FILE_ATTRIBUTE_REPARSE_POINT : 0);
}

HANDLE WINAPI FindOdd(LPCSTR pattern, LPWIN32_FIND_DATAA found)
{
    const HANDLE search = realFindFirst(pattern, found);
    if (IsOdd(pattern)) {
        found->dwReserved0 = tagOfOdd;
    }
    return search;
}

struct FilesWithReparsePoint : Files {
    FilesWithReparsePoint() { Put("t/odd/a"); }

    ImportPatch attributes_{"GetFileAttributesA", OddAttributes, realAttributes};
    ImportPatch find_{"FindFirstFileA", FindOdd, realFindFirst};
};

} // namespace

TEST_F(FilesWithReparsePoint, A_deduplicated_folder_is_removed_with_its_tree)
{
    tagOfOdd = 0x80000013; // IO_REPARSE_TAG_DEDUP
    RemoveDirectory(In("t"));
    EXPECT_FALSE(Exists("t"));
}

TEST_F(FilesWithReparsePoint, The_entries_of_a_link_are_not_touched)
{
    for (const DWORD tag :
         {DWORD{IO_REPARSE_TAG_SYMLINK}, DWORD{IO_REPARSE_TAG_MOUNT_POINT}, DWORD{0}}) {
        tagOfOdd = tag;
        EXPECT_THROW(RemoveDirectory(In("t")), FileError)
            << tag; // the patches make no real link, so the folder is not empty
        EXPECT_EQ("x", Text("t/odd/a"));
    }
}

TEST_F(FileOperationsLinks, The_removal_of_a_tree_does_not_enter_its_links)
{
    RemoveDirectory(In("t"));
    ASSERT_EQ(4U, removed.size());
    EXPECT_EQ(folder_ + "t", removed.back()); // when it is empty
    EXPECT_THAT(removed, UnorderedElementsAre(folder_ + "t\\a", folder_ + "t\\file_link",
                                              folder_ + "t\\link", folder_ + "t"));
}

TEST_F(FileOperationsLinks, A_link_is_removed_itself)
{
    RemoveDirectory(In("t\\link"));
    Remove(In("t\\link"));
    Remove(In("t\\file_link"));
    EXPECT_THAT(removed,
                ElementsAre(folder_ + "t\\link", folder_ + "t\\link", folder_ + "t\\file_link"));
}

TEST_F(FileOperationsLinks, A_copy_of_a_folder_into_itself_through_a_link_is_refused)
{
    EXPECT_EQ("cannot copy " + folder_ + "target to " + folder_ + "t\\link\\target",
              Failure<std::runtime_error>([&] { CopyTo(In("target"), folder_ + "t\\link"); }));
    EXPECT_EQ(FileKind::kNothing, KindOf(In("target\\target")));
}

} // namespace vqrx::test
