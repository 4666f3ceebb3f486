#include "RemoveTree.h"

#include "TempFolder.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

namespace vqrx::kit {
namespace {

TEST(RemoveTree, Paths_beyond_the_length_limit_and_read_only_files_are_removed)
{
    const test::TempFolder folder;
    const std::filesystem::path tree = folder.Path() / "tree";
    std::filesystem::create_directory(tree);
    std::ofstream(tree / "file") << "x";
    SetFileAttributesW((tree / "file").c_str(), FILE_ATTRIBUTE_READONLY);
    std::wstring path = L"\\\\?\\" + tree.wstring();
    for (int level = 0; level < 200; ++level) {
        path += L"\\d";
        ASSERT_TRUE(CreateDirectoryW(path.c_str(), nullptr)) << level;
    }
    EXPECT_TRUE(RemoveTree(tree));
    EXPECT_FALSE(std::filesystem::exists(tree));
}

TEST(RemoveTree, A_folder_that_is_not_there_counts_as_removed)
{
    const test::TempFolder folder;
    EXPECT_TRUE(RemoveTree(folder.Path() / "none"));
}

} // namespace
} // namespace vqrx::kit
