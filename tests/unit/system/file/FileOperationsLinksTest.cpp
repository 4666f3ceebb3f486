#include <windows.h>

#include "file/FileOperations.h"

#include "FilesFixture.h"
#include "ImportPatch.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string_view>

namespace vqrx::test {
namespace {

using namespace system::file::v2;
namespace fs = std::filesystem;

class FileOperationsLinks : public Files {};

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
    FilesWithReparsePoint()
    {
        realAttributes = attributes_.Original<DWORD WINAPI(LPCSTR)>();
        realFindFirst = find_.Original<HANDLE WINAPI(LPCSTR, LPWIN32_FIND_DATAA)>();
        Put("t/odd/a");
    }

    ImportPatch attributes_{"GetFileAttributesA", OddAttributes};
    ImportPatch find_{"FindFirstFileA", FindOdd};
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

TEST_F(FileOperationsLinks, The_target_of_a_link_survives_the_removal_of_the_tree)
{
    Put("target/precious");
    Put("t/a");
    const auto link = folder_.Path() / "t" / "link";
    std::error_code error;
    fs::create_directory_symlink(folder_.Path() / "target", link, error);
    if (error) {
        const std::string command = "cmd /c mklink /J \"" + Native("t\\link") + "\" \"" +
                                    Native("target") + "\" >nul 2>nul";
        ASSERT_EQ(0, std::system(command.c_str())) << "the host makes neither link nor junction";
    }
    RemoveDirectory(In("t"));
    EXPECT_FALSE(Exists("t"));
    EXPECT_EQ("x", Text("target/precious"));
}

} // namespace vqrx::test
