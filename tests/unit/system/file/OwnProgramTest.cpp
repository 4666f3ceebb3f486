#include "file/OwnProgram.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace vqrx::test {

using system::file::v2::PathBesideOwnProgram;
using system::file::v2::PathOfOwnProgram;

TEST(OwnProgram, Path_is_the_full_path_of_the_file)
{
    const std::filesystem::path program(PathOfOwnProgram());
    EXPECT_TRUE(program.is_absolute());
    EXPECT_TRUE(std::filesystem::is_regular_file(program));
    EXPECT_EQ(L"unit_system_file.exe", program.filename().wstring());
}

TEST(OwnProgram, Other_files_are_looked_for_in_its_folder)
{
    const std::filesystem::path program(PathOfOwnProgram());
    EXPECT_EQ(program.parent_path().wstring() + L"\\no such.dll",
              PathBesideOwnProgram(L"no such.dll"));
    EXPECT_EQ(program.wstring(), PathBesideOwnProgram(program.filename().wstring()));
}

} // namespace vqrx::test
