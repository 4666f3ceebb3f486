#include "AtomicFile.h"

#include "TempFolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace vqrx::test {
namespace {

std::string Content(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

TEST(AtomicFile, replaces_the_content_and_leaves_no_temporary_file)
{
    const TempFolder folder;
    const std::string path = folder.File("a.prom");
    EXPECT_TRUE(client::v0::ReplaceContent(path, "one\n"));
    EXPECT_EQ(Content(path), "one\n");
    EXPECT_TRUE(client::v0::ReplaceContent(path, "second\n"));
    EXPECT_EQ(Content(path), "second\n");
    EXPECT_FALSE(std::filesystem::exists(path + ".tmp"));
}

TEST(AtomicFile, keeps_the_old_content_if_the_new_one_cannot_be_put_in_its_place)
{
    const TempFolder folder;
    const std::string path = folder.File("a.prom");
    std::filesystem::create_directory(path); // a folder cannot be replaced by a file
    EXPECT_FALSE(client::v0::ReplaceContent(path, "one\n"));
    EXPECT_TRUE(std::filesystem::is_directory(path));
    EXPECT_FALSE(std::filesystem::exists(path + ".tmp"));
    EXPECT_FALSE(client::v0::ReplaceContent(folder.File("missing") + "/a.prom", "one\n"));
}

} // namespace
} // namespace vqrx::test
