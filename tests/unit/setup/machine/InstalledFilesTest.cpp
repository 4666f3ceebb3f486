#include "InstalledFiles.h"

#include "TempFolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

namespace vqrx::test {
namespace {

using setup::v0::RemoveInstalledFiles;

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
    RemoveInstalledFiles(temp.File("fw"),
                         {"a.exe", "sdk\\src\\a.cpp", "docs\\a.md", "missing", "no\\missing"});
    EXPECT_FALSE(std::filesystem::exists(temp.File("fw\\a.exe")));
    EXPECT_FALSE(std::filesystem::exists(temp.File("fw\\sdk")));
    EXPECT_FALSE(std::filesystem::exists(temp.File("fw\\docs\\a.md")));
    EXPECT_TRUE(std::filesystem::exists(temp.File("fw\\docs\\mine.txt")));
}

TEST(InstalledFiles, An_empty_folder_of_the_programs_goes_too)
{
    const TempFolder temp;
    MakeFile(temp.File("fw\\a.exe"));
    RemoveInstalledFiles(temp.File("fw"), {"a.exe"});
    EXPECT_FALSE(std::filesystem::exists(temp.File("fw")));
}

TEST(InstalledFiles, A_name_that_leads_out_of_the_folder_is_ignored)
{
    const TempFolder temp;
    MakeFile(temp.File("outside"));
    MakeFile(temp.File("fw\\a.exe"));
    RemoveInstalledFiles(temp.File("fw"), {"..\\outside", temp.File("outside")});
    EXPECT_TRUE(std::filesystem::exists(temp.File("outside")));
}

} // namespace
} // namespace vqrx::test
