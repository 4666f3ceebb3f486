#include "log_perf/ring/FileExists.h"

#include "TempFolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

namespace vqrx::test {

using log::log_perf::v2::FileExists;

TEST(FileExists, A_file_and_a_folder_exist_and_a_free_name_does_not)
{
    const TempFolder folder;
    EXPECT_FALSE(FileExists(folder.File("name")));
    std::ofstream(folder.File("file")) << "x";
    EXPECT_TRUE(FileExists(folder.File("file")));
    std::filesystem::create_directory(folder.Path() / "folder");
    EXPECT_TRUE(FileExists(folder.File("folder")));
    EXPECT_FALSE(FileExists(""));
}

} // namespace vqrx::test
