#include "RemoveTree.h"

#include "TempFolder.h"
#include "win32/UniqueHandle.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <system_error>
#include <thread>

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

// Holds a file open, as a virus scanner may: nobody can remove the file meanwhile.
class HeldFile {
public:
    explicit HeldFile(const std::filesystem::path& path)
        : handle_(CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                              0, nullptr))
    {
    }

private:
    system::win32::v1::UniqueKernelHandle handle_;
};

TEST(RemoveTree, A_folder_with_an_open_file_is_removed_after_the_file_is_closed)
{
    const test::TempFolder folder;
    const std::filesystem::path tree = folder.Path() / "tree";
    std::filesystem::create_directory(tree);
    std::ofstream(tree / "file") << "x";
    {
        const HeldFile held(tree / "file");
        EXPECT_FALSE(RemoveTreeWithin(tree, 0));
    }
    std::ofstream(tree / "mark") << "x";
    auto held = std::make_unique<HeldFile>(tree / "file");
    // The first attempt removes the mark and not the file; then the file is closed.
    std::thread closer([&] {
        std::error_code ignored;
        while (std::filesystem::exists(tree / "mark", ignored)) {
            std::this_thread::yield();
        }
        held.reset();
    });
    EXPECT_TRUE(RemoveTreeWithin(tree, 60000));
    closer.join();
    EXPECT_FALSE(std::filesystem::exists(tree));
}

} // namespace
} // namespace vqrx::kit
