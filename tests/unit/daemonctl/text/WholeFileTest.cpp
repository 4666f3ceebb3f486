#include "WholeFile.h"

#include "TempFolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>

namespace vqrx::test {
namespace {

using client::v0::ReadWholeFile;

std::string ErrorOfReading(const std::filesystem::path& path)
{
    try {
        return "read: " + ReadWholeFile(path);
    } catch (const std::runtime_error& error) {
        return error.what();
    }
}

std::string TextOf(const std::filesystem::path& path)
{
    const std::u8string text = path.u8string();
    return {text.begin(), text.end()};
}

} // namespace

TEST(WholeFile, Every_byte_is_read_as_it_is)
{
    const TempFolder folder;
    const std::string content("a\r\nb\n\0\x1A\xFF", 9);
    std::ofstream(folder.File("some"), std::ios::binary) << content;
    EXPECT_EQ(content, ReadWholeFile(folder.Path() / "some"));
}

TEST(WholeFile, Content_of_several_reads_is_joined)
{
    const TempFolder folder;
    std::string content;
    for (int number = 0; content.size() < 200000; ++number) {
        content += std::to_string(number) + "\n";
    }
    std::ofstream(folder.File("large"), std::ios::binary) << content;
    EXPECT_EQ(content, ReadWholeFile(folder.Path() / "large"));
}

TEST(WholeFile, An_empty_file_gives_the_empty_text)
{
    const TempFolder folder;
    std::ofstream(folder.File("empty"), std::ios::binary).flush();
    EXPECT_EQ("", ReadWholeFile(folder.Path() / "empty"));
}

TEST(WholeFile, The_error_for_a_missing_file_names_its_path_in_UTF_8)
{
    const TempFolder folder;
    const std::filesystem::path missing = folder.Path() / u8"fl\u00FCgel";
    EXPECT_EQ(TextOf(missing) + " cannot be read", ErrorOfReading(missing));
}

// Some systems open a folder as a file and then refuse to read from it.
TEST(WholeFile, A_folder_cannot_be_read)
{
    const TempFolder folder;
    EXPECT_EQ(TextOf(folder.Path()) + " cannot be read", ErrorOfReading(folder.Path()));
}

} // namespace vqrx::test
