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

TEST(File, drops_doubled_trailing_and_dot_components)
{
    const File file("C:\\\\.\\folder\\");
    EXPECT_EQ((Components{"C:", "folder"}), file.Components());
    EXPECT_EQ("C:\\folder", file.Path());
}

TEST(File, keeps_the_leading_separators_of_a_server_path)
{
    const File file("\\\\server\\share\\file.txt");
    EXPECT_EQ((Components{"\\\\server", "share", "file.txt"}), file.Components());
    EXPECT_EQ("\\\\server\\share\\file.txt", file.Path());
}

TEST(File, keeps_one_leading_separator)
{
    const File file("\\folder\\file");
    EXPECT_EQ((Components{"\\folder", "file"}), file.Components());
    EXPECT_EQ("\\folder\\file", file.Path());
}

TEST(File, keeps_a_dot_as_its_first_component_and_two_dots_anywhere)
{
    EXPECT_EQ((Components{".", "a"}), File(".\\.\\a").Components());
    EXPECT_EQ((Components{"..", "a", "..", "b"}), File("..\\a\\..\\b").Components());
    EXPECT_EQ((Components{"\\."}), File("\\.").Components());
}

TEST(File, leaves_slashes_alone)
{
    EXPECT_EQ((Components{"a/b"}), File("a/b").Components());
}

TEST(File, of_nothing_or_of_separators_only_is_an_invalid_path)
{
    EXPECT_EQ("invalid path []", Error(""));
    EXPECT_EQ("invalid path [\\]", Error("\\"));
    EXPECT_EQ("invalid path [\\\\\\]", Error("\\\\\\"));
    EXPECT_EQ("accepted", Error("."));
}

TEST(File, normalised_twice_is_the_same)
{
    for (const char* path : {"C:\\\\a\\.\\b\\", "\\\\s\\\\x", ".\\a", "a", "\\\\.\\pipe\\x"}) {
        const File once(path);
        EXPECT_EQ(once.Components(), File(once.Path()).Components()) << path;
    }
}

TEST(File, has_children_and_a_parent)
{
    EXPECT_EQ("C:\\a\\b", File("C:\\a").Child("b").Path());
    EXPECT_EQ("C:\\a", File("C:\\a\\b").Parent().Path());
}

} // namespace vqrx::test
