#include "FilePresence.h"

#include "ImportPatch.h"
#include "TempFolder.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <fstream>

namespace vqrx::test {
namespace {

using client::v0::FilePresence;
using client::v0::IsFile;
using client::v0::MayBeThere;
using client::v0::PresenceOf;

DWORD refusal = ERROR_SUCCESS;

DWORD WINAPI RefuseAttributes(LPCWSTR)
{
    SetLastError(refusal);
    return INVALID_FILE_ATTRIBUTES;
}

TEST(FilePresence, File_that_exists_is_there_and_another_one_is_missing)
{
    const TempFolder folder;
    std::ofstream(folder.File("fleet.txt")) << "x";
    EXPECT_EQ(PresenceOf(folder.File("fleet.txt")), FilePresence::kThere);
    EXPECT_EQ(PresenceOf(folder.File("other.txt")), FilePresence::kMissing);
    EXPECT_EQ(PresenceOf(folder.File("no\\such.txt")), FilePresence::kMissing);
    EXPECT_TRUE(MayBeThere(folder.File("fleet.txt")));
    EXPECT_FALSE(MayBeThere(folder.File("other.txt")));
}

TEST(FilePresence, File_on_a_drive_that_is_not_ready_is_not_taken_for_a_missing_one)
{
    const ImportPatch patch("GetFileAttributesW", RefuseAttributes);
    for (const DWORD error :
         {DWORD{ERROR_NOT_READY}, DWORD{ERROR_ACCESS_DENIED}, DWORD{ERROR_SHARING_VIOLATION}}) {
        refusal = error;
        EXPECT_EQ(PresenceOf("D:\\FW\\App\\fleet.txt"), FilePresence::kUnknown) << error;
        EXPECT_TRUE(MayBeThere("D:\\FW\\App\\fleet.txt")) << error;
    }
    refusal = ERROR_PATH_NOT_FOUND;
    EXPECT_EQ(PresenceOf("D:\\FW\\App\\fleet.txt"), FilePresence::kMissing);
}

TEST(FilePresence, A_folder_is_there_and_is_no_file)
{
    const TempFolder folder;
    std::ofstream(folder.File("fleet.txt")) << "x";
    EXPECT_EQ(PresenceOf(folder.Path().string()), FilePresence::kThere);
    EXPECT_FALSE(IsFile(folder.Path().string()));
    EXPECT_TRUE(IsFile(folder.File("fleet.txt")));
    EXPECT_FALSE(IsFile(folder.File("other.txt")));
}

} // namespace
} // namespace vqrx::test
