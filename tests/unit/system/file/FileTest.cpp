#include "file/File.h"

#include <gtest/gtest.h>

namespace vqrx::test {
namespace {

using system::file::v2::File;
using system::file::v2::FileError;
using Components = std::vector<std::string>;

std::string Error(const std::string& path)
{
    try {
        const File file(path);
    } catch (const FileError& error) {
        return error.what();
    }
    return "accepted";
}

} // namespace

TEST(File, Repeated_and_trailing_backslashes_and_dots_are_dropped)
{
    const File file("C:\\\\.\\folder\\");
    EXPECT_EQ((Components{"C:", "folder"}), file.Components());
    EXPECT_EQ("C:\\folder", file.Path());
}

TEST(File, The_leading_backslashes_of_a_server_path_are_kept)
{
    const File file("\\\\server\\share\\file.txt");
    EXPECT_EQ((Components{"\\\\server", "share", "file.txt"}), file.Components());
    EXPECT_EQ("\\\\server\\share\\file.txt", file.Path());
}

TEST(File, One_leading_backslash_is_kept)
{
    const File file("\\folder\\file");
    EXPECT_EQ((Components{"\\folder", "file"}), file.Components());
    EXPECT_EQ("\\folder\\file", file.Path());
}

TEST(File, A_dot_is_kept_as_first_component_and_two_dots_are_kept_everywhere)
{
    EXPECT_EQ((Components{".", "a"}), File(".\\.\\a").Components());
    EXPECT_EQ((Components{"..", "a", "..", "b"}), File("..\\a\\..\\b").Components());
    EXPECT_EQ((Components{"\\."}), File("\\.").Components());
}

TEST(File, Slashes_are_ordinary_characters)
{
    EXPECT_EQ((Components{"a/b"}), File("a/b").Components());
}

TEST(File, An_empty_path_and_a_path_of_backslashes_are_invalid)
{
    EXPECT_EQ("invalid path []", Error(""));
    EXPECT_EQ("invalid path [\\]", Error("\\"));
    EXPECT_EQ("invalid path [\\\\\\]", Error("\\\\\\"));
    EXPECT_EQ("accepted", Error("."));
}

TEST(File, A_second_normalising_changes_nothing)
{
    for (const char* path : {"C:\\\\a\\.\\b\\", "\\\\s\\\\x", ".\\a", "a", "\\\\.\\pipe\\x"}) {
        const File once(path);
        EXPECT_EQ(once.Components(), File(once.Path()).Components()) << path;
    }
}

TEST(File, Child_adds_a_component_and_Parent_removes_one)
{
    EXPECT_EQ("C:\\a\\b", File("C:\\a").Child("b").Path());
    EXPECT_EQ("C:\\a", File("C:\\a\\b").Parent().Path());
}

} // namespace vqrx::test
