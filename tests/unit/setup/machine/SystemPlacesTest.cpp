#include "SystemPlaces.h"

#include "ImportPatch.h"
#include "SetupError.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <filesystem>

namespace vqrx::test {
namespace {

DWORD WINAPI DenyAttributes(LPCWSTR)
{
    SetLastError(ERROR_ACCESS_DENIED);
    return INVALID_FILE_ATTRIBUTES;
}

TEST(SystemPlaces, Windows_names_its_folders)
{
    EXPECT_EQ("C:\\Program Files", setup::v0::ProgramFilesFolder());
    EXPECT_NE(INVALID_FILE_ATTRIBUTES,
              GetFileAttributesA((setup::v0::SystemFolder() + "\\kernel32.dll").c_str()));
    EXPECT_EQ(GetDriveTypeA("D:\\") == DRIVE_FIXED ? "D:\\FIRMWARE" : "C:\\FIRMWARE",
              setup::v0::DefaultFirmwareRoot());
}

TEST(SystemPlaces, A_file_and_a_folder_are_on_the_disk_and_a_missing_one_is_not)
{
    EXPECT_TRUE(setup::v0::IsOnDisk(setup::v0::SystemFolder()));
    EXPECT_TRUE(setup::v0::IsOnDisk(setup::v0::OwnProgram()));
    EXPECT_FALSE(setup::v0::IsOnDisk(setup::v0::OwnProgram() + ".missing"));
    EXPECT_FALSE(setup::v0::IsOnDisk(setup::v0::OwnProgram() + ".missing\\inner"));
}

// The installer checks no file that is missing. It must check a file that it may not examine.
TEST(SystemPlaces, A_file_that_Windows_does_not_show_counts_as_on_the_disk)
{
    const ImportPatch patch("GetFileAttributesW", DenyAttributes);
    EXPECT_TRUE(setup::v0::IsOnDisk("C:\\hidden\\file"));
}

TEST(SystemPlaces, A_full_path_has_backslashes_and_none_at_its_end_but_for_the_root_of_a_drive)
{
    EXPECT_EQ("C:\\a b\\d", setup::v0::FullPath("C:/a b\\c\\..\\.\\d\\\\"));
    EXPECT_EQ("C:\\", setup::v0::FullPath("C:/"));
    EXPECT_EQ(std::filesystem::current_path().string() + "\\x", setup::v0::FullPath("x"));
    EXPECT_THROW(static_cast<void>(setup::v0::FullPath("")), setup::v0::SetupError);
}

TEST(SystemPlaces, The_folder_of_a_path_keeps_the_root_of_a_drive)
{
    EXPECT_EQ("C:\\a b", setup::v0::FolderOf("C:\\a b\\c.txt"));
    EXPECT_EQ("C:\\", setup::v0::FolderOf("C:\\c.txt"));
    EXPECT_EQ("C:\\", setup::v0::FolderOf("C:\\"));
    EXPECT_EQ("", setup::v0::FolderOf("c.txt"));
    EXPECT_NE("", setup::v0::FolderOf(setup::v0::OwnProgram()));
}

} // namespace
} // namespace vqrx::test
