#include "file/DirectoryListing.h"

#include "FilesFixture.h"
#include "ImportPatch.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <algorithm>
#include <set>
#include <stdexcept>
#include <string_view>

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

HANDLE WINAPI FindNoPath(LPCSTR, LPWIN32_FIND_DATAA)
{
    SetLastError(ERROR_PATH_NOT_FOUND);
    return INVALID_HANDLE_VALUE;
}

void ExpectNoListing(const File& dir)
{
    EXPECT_EQ("could not enumerate the contents of [" + dir.Path() + "]: Win32 error 3",
              Failure<FileError>([&] { Listed(dir); }));
}

DWORD WINAPI LengthOnWindows(LPCSTR fullPath, DWORD, LPSTR, LPSTR*)
{
    return static_cast<DWORD>(std::string_view(fullPath).size() + 1); // with the final zero
}

int longNamesLeft = 0;
BOOL WINAPI FindLongName(HANDLE, LPWIN32_FIND_DATAW found)
{
    *found = {};
    std::fill_n(found->cFileName, 259, L'\u20AC');
    return longNamesLeft-- > 0 ? TRUE : FALSE;
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

TEST_F(DirectoryListing, A_path_that_is_not_found_is_a_missing_folder_only_if_nothing_is_there)
{
    const ImportPatch patch("FindFirstFileA", FindNoPath);
    EXPECT_TRUE(Listed(In("missing")).empty());
    ExpectNoListing(In(""));
}

TEST_F(DirectoryListing, A_path_that_is_not_found_is_no_missing_folder_if_it_is_too_long)
{
    const std::string folder = In("").Path();
    const std::size_t longest = MAX_PATH - 1 - std::string("\\\\*").size() - folder.size();
    const File fits = In(std::string(longest, 'n'));
    const File tooLong = In(std::string(longest + 1, 'n'));
    const ImportPatch patch("FindFirstFileA", FindNoPath);
    EXPECT_TRUE(Listed(fits).empty());
    ExpectNoListing(tooLong);
    const ImportPatch length("GetFullPathNameA", LengthOnWindows); // Wine knows no longer path
    EXPECT_TRUE(Listed(fits).empty());
    ExpectNoListing(tooLong);
}

TEST_F(DirectoryListing, Names_are_listed_in_UTF8)
{
    std::ofstream(folder_.Path() / L"caf\u00E9 \u20AC.txt") << "x";
    EXPECT_EQ((std::set<std::string>{"caf\xC3\xA9 \xE2\x82\xAC.txt"}), Listed(In("")));
}

TEST_F(DirectoryListing, The_longest_name_is_listed_whole)
{
    // 777 bytes in UTF-8. The disks of some hosts do not take such a name.
    const ImportPatch patch("FindNextFileW", FindLongName);
    longNamesLeft = 1;
    std::string expected;
    for (int letter = 0; letter < 259; ++letter) {
        expected += "\xE2\x82\xAC";
    }
    EXPECT_EQ((std::set<std::string>{expected}), Listed(In("")));
}

TEST_F(DirectoryListing, The_search_is_closed_if_the_callback_throws)
{
    Put("a.txt");
    closedSearches = 0;
    const ImportPatch patch("FindClose", CountClose, systemFindClose);
    EXPECT_THROW(
        ForEachEntry(In(""), [](const File&, bool) { throw std::runtime_error("callback"); }),
        std::runtime_error);
    EXPECT_EQ(1, closedSearches);
}

} // namespace vqrx::test
