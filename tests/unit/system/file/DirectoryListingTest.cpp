#include "file/DirectoryListing.h"

#include "FilesFixture.h"
#include "ImportPatch.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <set>
#include <stdexcept>

namespace vqrx::test {
namespace {

using namespace system::file::v2;
namespace fs = std::filesystem;

class DirectoryListing : public Files {};

std::set<std::string> Listed(const File& dir)
{
    std::set<std::string> names;
    ForEachEntry(dir, [&](const File& entry, bool isDirectory) {
        names.insert(entry.Components().back() + (isDirectory ? "/" : ""));
    });
    return names;
}

HANDLE WINAPI RefuseSearch(LPCSTR, LPWIN32_FIND_DATAA)
{
    SetLastError(ERROR_ACCESS_DENIED);
    return INVALID_HANDLE_VALUE;
}

int closedSearches = 0;
decltype(FindClose)* systemFindClose = nullptr;
BOOL WINAPI CountClose(HANDLE search)
{
    ++closedSearches;
    return systemFindClose(search);
}

} // namespace

TEST_F(DirectoryListing, A_listing_says_which_entries_are_folders_and_leaves_the_dots_out)
{
    Put("a.txt");
    Put("sub/b.txt");
    EXPECT_EQ((std::set<std::string>{"a.txt", "sub/"}), Listed(In("")));
}

TEST_F(DirectoryListing, An_empty_folder_has_no_entries)
{
    fs::create_directory(folder_.Path() / "empty");
    EXPECT_TRUE(Listed(In("empty")).empty());
}

TEST_F(DirectoryListing, ForEachEntry_of_a_missing_folder_lists_nothing)
{
    EXPECT_TRUE(Listed(In("missing")).empty());
}

TEST_F(DirectoryListing, EnumerateDirectory_of_a_missing_folder_or_of_a_file_fails)
{
    const File missing = In("missing");
    EXPECT_EQ(missing.Path() + " is not a directory",
              Failure<std::runtime_error>([&] { EnumerateDirectory(missing, {}); }));
    Put("file");
    EXPECT_EQ(In("file").Path() + " is not a directory",
              Failure<std::runtime_error>([&] { EnumerateDirectory(In("file"), {}); }));
}

TEST_F(DirectoryListing, A_folder_that_cannot_be_listed_raises_the_error_of_the_system)
{
    const ImportPatch patch("FindFirstFileA", RefuseSearch);
    EXPECT_EQ("could not enumerate the contents of [" + In("").Path() + "]: Win32 error 5",
              Failure<FileError>([&] { Listed(In("")); }));
}

TEST_F(DirectoryListing, Names_are_listed_in_UTF8)
{
    std::ofstream(folder_.Path() / L"caf\u00E9 \u20AC.txt") << "x";
    EXPECT_EQ((std::set<std::string>{"caf\xC3\xA9 \xE2\x82\xAC.txt"}), Listed(In("")));
}

TEST_F(DirectoryListing, A_name_of_240_bytes_in_UTF8_is_listed_whole)
{
    const std::wstring name(80,
                            L'\u20AC'); // 240 bytes in UTF-8, as long as this host's disk allows
    std::ofstream(folder_.Path() / name) << "x";
    const auto names = Listed(In(""));
    ASSERT_EQ(1U, names.size());
    EXPECT_EQ(240U, names.begin()->size());
}

TEST_F(DirectoryListing, The_search_is_closed_if_the_callback_throws)
{
    Put("a.txt");
    closedSearches = 0;
    const ImportPatch patch("FindClose", CountClose);
    systemFindClose = patch.Original<decltype(FindClose)>();
    EXPECT_THROW(
        ForEachEntry(In(""), [](const File&, bool) { throw std::runtime_error("callback"); }),
        std::runtime_error);
    EXPECT_EQ(1, closedSearches);
}

} // namespace vqrx::test
