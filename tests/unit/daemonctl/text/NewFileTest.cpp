#include "NewFile.h"

#include "FileContent.h"
#include "TempFolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

#ifdef _WIN32
#include "ImportPatch.h"

#include <windows.h>
#endif

namespace vqrx::test {
namespace {

using client::v0::WriteNewFile;

TEST(NewFile, is_made_with_its_content)
{
    const TempFolder folder;
    const std::string content = std::string(3U << 20U, 'x') + '\0' + "\r\n";
    EXPECT_TRUE(WriteNewFile(folder.File("new"), content));
    EXPECT_TRUE(FileContent(folder.File("new")) == content);
    EXPECT_TRUE(WriteNewFile(folder.File("empty"), ""));
    EXPECT_TRUE(std::filesystem::exists(folder.File("empty")));
    EXPECT_FALSE(WriteNewFile(folder.File("no") + "/such", "text"));
}

TEST(NewFile, leaves_a_file_or_a_folder_of_its_name_as_it_is)
{
    const TempFolder folder;
    std::ofstream(folder.File("file"), std::ios::binary) << "mine";
    EXPECT_FALSE(WriteNewFile(folder.File("file"), "new"));
    EXPECT_EQ(FileContent(folder.File("file")), "mine");
    std::filesystem::create_directory(folder.File("folder"));
    EXPECT_FALSE(WriteNewFile(folder.File("folder"), "new"));
    EXPECT_TRUE(std::filesystem::is_directory(folder.File("folder")));
}

#ifdef _WIN32

BOOL WINAPI RefuseToWrite(HANDLE, LPCVOID, DWORD, LPDWORD written, LPOVERLAPPED)
{
    *written = 0;
    SetLastError(ERROR_DISK_FULL);
    return FALSE;
}

TEST(NewFile, is_removed_if_the_disk_is_full)
{
    const TempFolder folder;
    const ImportPatch patch("WriteFile", RefuseToWrite);
    EXPECT_FALSE(WriteNewFile(folder.File("new"), "text"));
    EXPECT_FALSE(std::filesystem::exists(folder.File("new")));
}

BOOL WINAPI RefuseToFlush(HANDLE)
{
    SetLastError(ERROR_DISK_FULL);
    return FALSE;
}

// Its maker gives it the name of an older file next. A power failure after that must not leave an
// empty one.
TEST(NewFile, is_removed_if_its_content_does_not_reach_the_disk)
{
    const TempFolder folder;
    const ImportPatch patch("FlushFileBuffers", RefuseToFlush);
    EXPECT_FALSE(WriteNewFile(folder.File("new"), "text"));
    EXPECT_FALSE(std::filesystem::exists(folder.File("new")));
}

#else // Wine makes no links

TEST(NewFile, is_not_made_through_a_link_that_somebody_has_prepared)
{
    const TempFolder folder;
    std::ofstream(folder.File("victim"), std::ios::binary) << "mine";
    for (const char* const target : {"victim", "nowhere"}) {
        const std::string link = folder.File(std::string("to ") + target);
        std::filesystem::create_symlink(folder.File(target), link);
        EXPECT_FALSE(WriteNewFile(link, "new"));
        EXPECT_TRUE(std::filesystem::is_symlink(link));
    }
    EXPECT_EQ(FileContent(folder.File("victim")), "mine");
    EXPECT_FALSE(std::filesystem::exists(folder.File("nowhere")));
}

#endif

} // namespace
} // namespace vqrx::test
