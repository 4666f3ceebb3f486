#include <windows.h>

#include "file/DirectoryListing.h"
#include "file/FileOperations.h"

#include "HostRefusal.h"
#include "TempFolder.h"
#include "Wine.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

namespace vqrx::test {
namespace {

using namespace system::file::v2;

// Only the wide functions, with this prefix, accept very long paths.
const std::wstring kLongPath = L"\\\\?\\";

// A folder "many" with a hundred thousand empty files, and a folder "deep" with a thousand levels
// of folders. The host of Wine makes them (make_many_files.sh): Wine looks at every file of a
// folder for each new file, and at every level above for each new folder. On Windows the test
// itself makes them.
class ManyFiles : public testing::Test {
protected:
    std::string Made(const std::string& name)
    {
        if (const char* const folder = std::getenv("DM_MANY_FILES")) {
            return (std::filesystem::path(folder).make_preferred() / name).string();
        }
        if (RunsUnderWine()) {
            throw HostRefusal("Wine takes very long to make a hundred thousand files");
        }
        const std::string made = own_.File(name);
        name == "many" ? MakeMany(made) : MakeDeep(made);
        return made;
    }

private:
    static void MakeMany(const std::string& folder)
    {
        std::filesystem::create_directory(folder);
        for (int number = 1; number <= 100000; ++number) {
            std::ofstream(folder + "\\" + std::to_string(number));
        }
    }
    static void MakeDeep(const std::string& folder)
    {
        std::wstring path = kLongPath + std::wstring(folder.begin(), folder.end());
        for (int level = 0; level <= 1000; ++level) {
            CreateDirectoryW(path.c_str(), nullptr);
            path += L"\\d";
        }
    }

    const TempFolder own_;
};

} // namespace

TEST_F(ManyFiles, A_folder_with_a_hundred_thousand_files_is_listed)
{
    const File many(Made("many"));
    std::size_t count = 0;
    ForEachEntry(many, [&](const File&, bool isDirectory) { count += isDirectory ? 0 : 1; });
    EXPECT_EQ(100000U, count);
    RemoveDirectory(many);
    EXPECT_FALSE(std::filesystem::exists(many.Path()));
}

TEST_F(ManyFiles, A_removal_fails_beyond_the_length_limit_and_leaves_the_rest)
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
    std::wstring deepest = kLongPath + std::wstring(root.begin(), root.end());
    for (int level = 0; level < 1000; ++level) {
        deepest += L"\\d";
    }
    EXPECT_NE(INVALID_FILE_ATTRIBUTES, GetFileAttributesW(deepest.c_str()));
}

} // namespace vqrx::test
