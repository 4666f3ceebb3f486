#include "AtomicFile.h"

#include "FileContent.h"
#include "TempFolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace vqrx::test {
namespace {

// Counts the files and folders of the folder in which the file is.
auto FilesBeside(const std::string& path)
{
    const std::filesystem::directory_iterator files(std::filesystem::path(path).parent_path());
    return std::distance(begin(files), end(files));
}

TEST(AtomicFile, replaces_the_content_and_leaves_no_temporary_file)
{
    const TempFolder folder;
    const std::string path = folder.File("a.prom");
    EXPECT_TRUE(client::v0::ReplaceContent(path, "one\n"));
    EXPECT_EQ(FileContent(path), "one\n");
    EXPECT_TRUE(client::v0::ReplaceContent(path, "second\n"));
    EXPECT_EQ(FileContent(path), "second\n");
    EXPECT_EQ(FilesBeside(path), 1);
}

// Where an open file cannot be replaced, as on Windows, it stays as it is.
TEST(AtomicFile, leaves_the_content_to_a_reader_that_has_opened_it)
{
    const TempFolder folder;
    const std::string path = folder.File("a.prom");
    ASSERT_TRUE(client::v0::ReplaceContent(path, "one\n"));
    std::ifstream reader(path, std::ios::binary);
    ASSERT_TRUE(reader.is_open());
    const bool replaced = client::v0::ReplaceContent(path, "second\n");
    const std::string seen{std::istreambuf_iterator<char>(reader),
                           std::istreambuf_iterator<char>()};
    EXPECT_EQ(seen, "one\n");
    EXPECT_EQ(FileContent(path), replaced ? "second\n" : "one\n");
}

// Somebody may have planted a link under a name that can be foreseen.
TEST(AtomicFile, does_not_write_to_a_file_beside_it)
{
    const TempFolder folder;
    const std::string path = folder.File("a.prom");
    std::ofstream(path + ".tmp", std::ios::binary) << "mine";
    EXPECT_TRUE(client::v0::ReplaceContent(path, "one\n"));
    EXPECT_EQ(FileContent(path + ".tmp"), "mine");
    EXPECT_EQ(FilesBeside(path), 2);
}

#ifndef _WIN32 // Wine makes no links
// Whoever may write in the folder may have put a link to somebody's file there.
TEST(AtomicFile, replaces_a_link_and_leaves_the_file_to_which_it_leads)
{
    const TempFolder folder;
    const std::string victim = folder.File("victim");
    const std::string path = folder.File("a.prom");
    std::ofstream(victim, std::ios::binary) << "mine";
    std::filesystem::create_symlink(victim, path);
    EXPECT_TRUE(client::v0::ReplaceContent(path, "one\n"));
    EXPECT_EQ(FileContent(victim), "mine");
    EXPECT_EQ(FileContent(path), "one\n");
    EXPECT_FALSE(std::filesystem::is_symlink(path));
}
#endif

TEST(AtomicFile, keeps_the_old_content_if_the_new_one_cannot_be_put_in_its_place)
{
    const TempFolder folder;
    const std::string path = folder.File("a.prom");
    std::filesystem::create_directory(path); // a folder cannot be replaced by a file
    EXPECT_FALSE(client::v0::ReplaceContent(path, "one\n"));
    EXPECT_TRUE(std::filesystem::is_directory(path));
    EXPECT_EQ(FilesBeside(path), 1);
    EXPECT_FALSE(client::v0::ReplaceContent(folder.File("missing") + "/a.prom", "one\n"));
}

} // namespace
} // namespace vqrx::test
