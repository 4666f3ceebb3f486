#include "WorkingDirectory.h"

#include "TempFolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <stdexcept>

namespace vqrx::test {
namespace {

TEST(WorkingDirectoryTest, Working_folder_is_changed_to_the_given_folder)
{
    const TempFolder folder;
    const auto before = std::filesystem::current_path();
    app::v0::ChangeDirectory(folder.Path().string());
    EXPECT_TRUE(std::filesystem::equivalent(std::filesystem::current_path(), folder.Path()));
    std::filesystem::current_path(before);
}

TEST(WorkingDirectoryTest, Missing_folder_is_an_error_with_its_name_and_the_error_number)
{
    const TempFolder folder;
    const std::string missing = folder.File("missing");
    const auto before = std::filesystem::current_path();
    try {
        app::v0::ChangeDirectory(missing);
        FAIL();
    } catch (const std::runtime_error& error) {
        EXPECT_EQ(error.what(), "cannot switch to directory " + missing + ". Error 2");
    }
    EXPECT_EQ(std::filesystem::current_path(), before);
}

} // namespace
} // namespace vqrx::test
