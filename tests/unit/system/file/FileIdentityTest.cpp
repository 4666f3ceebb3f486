#include "file/FileIdentity.h"

#include "FilesFixture.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace vqrx::test {
namespace {

using system::file::v2::File;
using system::file::v2::LeadsInto;

class FileIdentity : public Files {
protected:
    FileIdentity()
    {
        Put("folder/sub/file");
        Put("folder2/file");
    }
};

} // namespace

TEST_F(FileIdentity, A_path_leads_to_its_entry_however_it_is_spelt)
{
    for (const char* path : {"folder", "FOLDER", "folder\\sub\\..", "folder2\\..\\folder"}) {
        EXPECT_TRUE(LeadsInto(In(path), In("folder"))) << path;
    }
    EXPECT_TRUE(LeadsInto(In("Folder\\Sub\\File"), In("folder\\sub\\file")));
}

TEST_F(FileIdentity, A_path_leads_into_every_folder_above_it_whether_it_exists_or_not)
{
    for (const char* path : {"folder\\sub", "folder\\sub\\file", "folder\\new\\and\\deeper"}) {
        EXPECT_TRUE(LeadsInto(In(path), In("folder"))) << path;
    }
}

TEST_F(FileIdentity, A_path_does_not_lead_into_a_folder_beside_it_or_below_it)
{
    EXPECT_FALSE(LeadsInto(In("folder2"), In("folder")));
    EXPECT_FALSE(LeadsInto(In("folder2\\file"), In("folder\\sub\\file")));
    EXPECT_FALSE(LeadsInto(In("folder"), In("folder\\sub")));
    EXPECT_FALSE(LeadsInto(In("folder\\..\\folder2"), In("folder")));
}

TEST_F(FileIdentity, The_root_of_a_drive_is_not_the_current_folder_of_the_drive)
{
    const auto before = std::filesystem::current_path();
    std::filesystem::current_path(folder_.Path() / "folder");
    EXPECT_FALSE(LeadsInto(In("folder2\\file"), In("folder")));
    EXPECT_TRUE(LeadsInto(File("sub\\new"), In("folder")));
    std::filesystem::current_path(before);
}

TEST_F(FileIdentity, No_path_leads_to_a_missing_entry)
{
    EXPECT_FALSE(LeadsInto(In("missing"), In("missing")));
}

} // namespace vqrx::test
