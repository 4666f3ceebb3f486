#include "InstalledFiles.h"

#include "ImportPatch.h"
#include "OpenToEverybody.h"
#include "TempFolder.h"
#include "win32/UniqueHandle.h"

#include <windows.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace vqrx::test {
namespace {

using setup::v0::RemoveInstalledFiles;

constexpr bool kAllowWeak = true;
const std::vector<std::string> kNothing;

void MakeFile(const std::string& path)
{
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    std::ofstream(path) << "x";
}

TEST(InstalledFiles, Files_and_empty_folders_go_and_the_files_of_others_stay)
{
    const TempFolder temp;
    for (const char* const name : {"fw\\a.exe", "fw\\sdk\\src\\a.cpp", "fw\\docs\\a.md"}) {
        MakeFile(temp.File(name));
    }
    MakeFile(temp.File("fw\\docs\\mine.txt"));
    EXPECT_EQ(kNothing,
              RemoveInstalledFiles(
                  temp.File("fw"),
                  {"a.exe", "sdk\\src\\a.cpp", "docs\\a.md", "missing", "no\\missing"}, false));
    EXPECT_FALSE(std::filesystem::exists(temp.File("fw\\a.exe")));
    EXPECT_FALSE(std::filesystem::exists(temp.File("fw\\sdk")));
    EXPECT_FALSE(std::filesystem::exists(temp.File("fw\\docs\\a.md")));
    EXPECT_TRUE(std::filesystem::exists(temp.File("fw\\docs\\mine.txt")));
}

TEST(InstalledFiles, An_empty_folder_of_the_programs_goes_too)
{
    const TempFolder temp;
    MakeFile(temp.File("fw\\a.exe"));
    EXPECT_EQ(kNothing, RemoveInstalledFiles(temp.File("fw"), {"a.exe"}, false));
    EXPECT_FALSE(std::filesystem::exists(temp.File("fw")));
}

TEST(InstalledFiles, A_name_that_leads_out_of_the_folder_is_ignored)
{
    const TempFolder temp;
    MakeFile(temp.File("outside"));
    MakeFile(temp.File("fw\\a.exe"));
    EXPECT_EQ(kNothing, RemoveInstalledFiles(temp.File("fw"), {"..\\outside", temp.File("outside")},
                                             kAllowWeak));
    EXPECT_TRUE(std::filesystem::exists(temp.File("outside")));
}

BOOL WINAPI RefuseToDelete(LPCWSTR)
{
    SetLastError(ERROR_ACCESS_DENIED);
    return FALSE;
}

std::vector<std::string> deletedLater; // what Windows is to delete when it starts next

BOOL WINAPI NoteWhatIsDeletedLater(LPCWSTR from, LPCWSTR to, DWORD flags)
{
    if ((flags & MOVEFILE_DELAY_UNTIL_REBOOT) != 0) {
        deletedLater.push_back(std::filesystem::path(from).string());
        return TRUE;
    }
    return MoveFileW(from, to);
}

// Windows can move a file that a program runs from, and not delete it.
TEST(InstalledFiles, A_file_in_use_leaves_its_folder_which_is_removed)
{
    const TempFolder temp;
    MakeFile(temp.File("fw\\docs\\a.md"));
    const system::win32::v1::UniqueKernelHandle used(
        CreateFileA(temp.File("fw\\docs\\a.md").c_str(), GENERIC_READ, FILE_SHARE_DELETE, nullptr,
                    OPEN_EXISTING, 0, nullptr));
    const ImportPatch refuse("DeleteFileW", RefuseToDelete);
    const ImportPatch move("MoveFileExW", NoteWhatIsDeletedLater);
    deletedLater.clear();
    EXPECT_EQ(kNothing, RemoveInstalledFiles(temp.File("fw"), {"docs\\a.md"}, false));
    EXPECT_FALSE(std::filesystem::exists(temp.File("fw\\docs")));
    ASSERT_EQ(2U, deletedLater.size()); // the file, then its folder
    EXPECT_TRUE(deletedLater[0].starts_with(temp.File("fw\\~removed-"))) << deletedLater[0];
    EXPECT_EQ(temp.File("fw"), deletedLater[1]);
}

// By the next start of Windows the file may be one of the next installation.
TEST(InstalledFiles, A_file_that_somebody_holds_stays_and_is_not_deleted_later)
{
    const TempFolder temp;
    MakeFile(temp.File("fw\\a.exe"));
    const system::win32::v1::UniqueKernelHandle held(CreateFileA(
        temp.File("fw\\a.exe").c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
    const ImportPatch move("MoveFileExW", NoteWhatIsDeletedLater);
    deletedLater.clear();
    EXPECT_EQ(std::vector<std::string>{"The file " + temp.File("fw\\a.exe") +
                                       " stays: Windows error 32. Delete it."},
              RemoveInstalledFiles(temp.File("fw"), {"a.exe"}, false, 100));
    EXPECT_TRUE(std::filesystem::exists(temp.File("fw\\a.exe")));
    EXPECT_THAT(deletedLater, testing::Not(testing::Contains(temp.File("fw\\a.exe"))));
}

// Whoever may change a folder can put a link in its place, which leads to files of somebody else.
TEST(InstalledFiles, Files_in_a_folder_that_others_may_change_stay_with_the_reason)
{
    const TempFolder temp;
    MakeFile(temp.File("fw\\a.exe"));
    MakeFile(temp.File("fw\\docs\\a.md"));
    MakeFile(temp.File("fw\\docs\\b.md"));
    OpenToEverybody(temp.File("fw\\docs"));
    const std::vector<std::string> stay =
        RemoveInstalledFiles(temp.File("fw"), {"a.exe", "docs\\a.md", "docs\\b.md"}, false);
    ASSERT_EQ(1U, stay.size());
    EXPECT_TRUE(
        stay.front().starts_with("The files in " + temp.File("fw\\docs") + " stay, because "))
        << stay.front();
    EXPECT_NE(std::string::npos, stay.front().find(" may write to " + temp.File("fw\\docs")))
        << stay.front();
    EXPECT_FALSE(std::filesystem::exists(temp.File("fw\\a.exe")));
    EXPECT_TRUE(std::filesystem::exists(temp.File("fw\\docs\\a.md")));
    EXPECT_TRUE(std::filesystem::exists(temp.File("fw\\docs\\b.md")));
}

// Nobody deletes it now, and Windows not when it starts next.
TEST(InstalledFiles, An_empty_folder_that_others_may_change_stays)
{
    const TempFolder temp;
    std::filesystem::create_directory(temp.File("fw"));
    OpenToEverybody(temp.File("fw"));
    const std::vector<std::string> stay = RemoveInstalledFiles(temp.File("fw"), {"a.exe"}, false);
    ASSERT_EQ(1U, stay.size());
    EXPECT_TRUE(std::filesystem::exists(temp.File("fw")));
    EXPECT_EQ(kNothing, RemoveInstalledFiles(temp.File("gone"), {"a.exe"}, false));
}

TEST(InstalledFiles, Whoever_accepts_the_risk_has_files_in_an_open_folder_removed_too)
{
    const TempFolder temp;
    MakeFile(temp.File("fw\\a.exe"));
    OpenToEverybody(temp.File("fw"));
    EXPECT_EQ(kNothing, RemoveInstalledFiles(temp.File("fw"), {"a.exe"}, kAllowWeak));
    EXPECT_FALSE(std::filesystem::exists(temp.File("fw")));
}

} // namespace
} // namespace vqrx::test
