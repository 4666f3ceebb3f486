#include "file/DirectoryListing.h"
#include "file/FileOperations.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>

namespace vqrx::test {
namespace {

using namespace system::file::v2;

// Made by the host (make_many_files.sh): under Wine a new file costs a look at every file that is
// there already, and a new folder a look at every level above.
std::string Made(const std::string& name)
{
    const char* folder = std::getenv("DM_MANY_FILES");
    if (folder == nullptr) {
        throw std::runtime_error("run by ctest, which makes the files");
    }
    return (std::filesystem::path(folder).make_preferred() / name).string();
}

} // namespace

TEST(Files, may_be_a_hundred_thousand_in_one_folder)
{
    const File many(Made("many"));
    std::size_t count = 0;
    ForEachEntry(many, [&](const File&, bool isDirectory) { count += isDirectory ? 0 : 1; });
    EXPECT_EQ(100000U, count);
    RemoveDirectory(many);
    EXPECT_FALSE(std::filesystem::exists(many.Path()));
}

TEST(Files, beyond_the_systems_length_limit_end_a_removal_with_an_error_and_stay)
{
    const std::string root = Made("deep");
    std::string failure;
    try {
        RemoveDirectory(File(root));
    } catch (const FileError& error) {
        failure = error.what();
    }
    EXPECT_EQ(0U, failure.find("could not enumerate the contents of [" + root + "\\d\\d"))
        << failure;
    // Only the wide functions with this prefix go as deep as that.
    std::wstring deepest = L"\\\\?\\" + std::wstring(root.begin(), root.end());
    for (int level = 0; level < 1000; ++level) {
        deepest += L"\\d";
    }
    EXPECT_NE(INVALID_FILE_ATTRIBUTES, GetFileAttributesW(deepest.c_str()));
}

} // namespace vqrx::test
