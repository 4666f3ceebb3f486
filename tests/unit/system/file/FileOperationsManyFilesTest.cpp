#include <windows.h>

#include "file/DirectoryListing.h"
#include "file/FileOperations.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>

namespace vqrx::test {
namespace {

using namespace system::file::v2;

// The host makes these files (make_many_files.sh). To make them here would take long, because Wine
// looks at every file of a folder for each new file, and at every level above for each new folder.
std::string Made(const std::string& name)
{
    const char* folder = std::getenv("DM_MANY_FILES");
    if (folder == nullptr) {
        throw std::runtime_error("run by ctest, which makes the files");
    }
    return (std::filesystem::path(folder).make_preferred() / name).string();
}

} // namespace

TEST(Files, A_folder_with_a_hundred_thousand_files_is_listed)
{
    const File many(Made("many"));
    std::size_t count = 0;
    ForEachEntry(many, [&](const File&, bool isDirectory) { count += isDirectory ? 0 : 1; });
    EXPECT_EQ(100000U, count);
    RemoveDirectory(many);
    EXPECT_FALSE(std::filesystem::exists(many.Path()));
}

TEST(Files, A_removal_fails_beyond_the_length_limit_and_leaves_the_rest)
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
    // Only the wide functions, with this prefix, accept such a long path.
    std::wstring deepest = L"\\\\?\\" + std::wstring(root.begin(), root.end());
    for (int level = 0; level < 1000; ++level) {
        deepest += L"\\d";
    }
    EXPECT_NE(INVALID_FILE_ATTRIBUTES, GetFileAttributesW(deepest.c_str()));
}

} // namespace vqrx::test
