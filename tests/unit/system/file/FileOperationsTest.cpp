#include "file/FileOperations.h"

#include "ImportPatch.h"
#include "TempFolder.h"
#include "file/DirectoryListing.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <stdexcept>
#include <string_view>

namespace vqrx::test {
namespace {

using namespace system::file::v2;
namespace fs = std::filesystem;

class Files : public ::testing::Test {
protected:
    File In(const std::string& name) const { return File(Native(name)); }

    std::string Native(const std::string& name) const
    {
        std::string path = (folder_.Path() / name).make_preferred().string();
        return path;
    }

    void Put(const std::string& name, const std::string& text = "x") const
    {
        fs::create_directories((folder_.Path() / name).parent_path());
        std::ofstream(folder_.Path() / name, std::ios::binary) << text;
    }

    std::string Text(const std::string& name) const
    {
        std::ifstream file(folder_.Path() / name, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    bool Exists(const std::string& name) const { return fs::exists(folder_.Path() / name); }

    TempFolder folder_;
};

std::set<std::string> Listed(const File& dir)
{
    std::set<std::string> names;
    ForEachEntry(dir, [&](const File& entry, bool isDirectory) {
        names.insert(entry.Components().back() + (isDirectory ? "/" : ""));
    });
    return names;
}

template <typename Exception, typename Operation>
std::string Failure(Operation operation)
{
    try {
        operation();
    } catch (const Exception& exception) {
        return exception.what();
    }
    return "nothing raised";
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

TEST_F(Files, are_listed_with_their_kind_and_without_dots)
{
    Put("a.txt");
    Put("sub/b.txt");
    EXPECT_EQ((std::set<std::string>{"a.txt", "sub/"}), Listed(In("")));
}

TEST_F(Files, of_an_empty_folder_are_none)
{
    fs::create_directory(folder_.Path() / "empty");
    EXPECT_TRUE(Listed(In("empty")).empty());
}

TEST_F(Files, of_a_missing_folder_are_none_in_a_plain_listing)
{
    EXPECT_TRUE(Listed(In("missing")).empty());
}

TEST_F(Files, of_a_missing_folder_or_of_a_file_cannot_be_enumerated)
{
    const File missing = In("missing");
    EXPECT_EQ(missing.Path() + " is not a directory",
              Failure<std::runtime_error>([&] { EnumerateDirectory(missing, {}); }));
    Put("file");
    EXPECT_EQ(In("file").Path() + " is not a directory",
              Failure<std::runtime_error>([&] { EnumerateDirectory(In("file"), {}); }));
}

TEST_F(Files, that_cannot_be_listed_raise_with_the_systems_error)
{
    const ImportPatch patch("FindFirstFileA", RefuseSearch);
    EXPECT_EQ("could not enumerate the contents of [" + In("").Path() + "]: Win32 error 5",
              Failure<FileError>([&] { Listed(In("")); }));
}

TEST_F(Files, are_listed_in_utf8)
{
    std::ofstream(folder_.Path() / L"caf\u00E9 \u20AC.txt") << "x";
    EXPECT_EQ((std::set<std::string>{"caf\xC3\xA9 \xE2\x82\xAC.txt"}), Listed(In("")));
}

TEST_F(Files, with_names_whose_utf8_form_is_longer_than_the_systems_record_are_listed_whole)
{
    const std::wstring name(80,
                            L'\u20AC'); // 240 bytes in UTF-8, as long as this host's disk allows
    std::ofstream(folder_.Path() / name) << "x";
    const auto names = Listed(In(""));
    ASSERT_EQ(1U, names.size());
    EXPECT_EQ(240U, names.begin()->size());
}

TEST_F(Files, search_is_closed_when_the_callback_throws)
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

TEST_F(Files, folder_is_made_one_level_at_a_time)
{
    CreateDirectory(In("a"));
    EXPECT_TRUE(Exists("a"));
    EXPECT_EQ("could not create directory [" + In("a").Path() + "]: Win32 error 183",
              Failure<FileError>([&] { CreateDirectory(In("a")); }));
    EXPECT_EQ("could not create directory [" + In("x\\y").Path() + "]: Win32 error 3",
              Failure<FileError>([&] { CreateDirectory(In("x\\y")); }));
}

TEST_F(Files, folders_are_made_with_all_their_parents)
{
    CreateDirectories(In("a\\b\\c"));
    EXPECT_TRUE(Exists("a/b/c"));
    EXPECT_NO_THROW(CreateDirectories(In("a\\b\\c")));
}

TEST_F(Files, that_stand_where_a_folder_is_wanted_are_replaced)
{
    Put("a");
    CreateDirectories(In("a"));
    EXPECT_TRUE(fs::is_directory(folder_.Path() / "a"));
    Put("b");
    CreateDirectories(In("b\\c"));
    EXPECT_TRUE(fs::is_directory(folder_.Path() / "b/c"));
}

TEST_F(Files, are_removed_or_raise_with_the_systems_error)
{
    Put("a");
    RemoveFile(In("a"));
    EXPECT_FALSE(Exists("a"));
    EXPECT_EQ("could not remove file [" + In("a").Path() + "]: Win32 error 2",
              Failure<FileError>([&] { RemoveFile(In("a")); }));
}

TEST_F(Files, in_a_tree_are_removed_before_their_folders)
{
    Put("t/a");
    Put("t/s/b");
    Put("t/s/u/c");
    fs::create_directories(folder_.Path() / "t/empty");
    RemoveDirectory(In("t"));
    EXPECT_FALSE(Exists("t"));
}

TEST_F(Files, folder_that_is_missing_cannot_be_removed)
{
    const std::string failure = Failure<FileError>([&] { RemoveDirectory(In("missing")); });
    EXPECT_EQ(0U, failure.find("could not remove directory [" + In("missing").Path() +
                               "]: Win32 error "));
}

TEST_F(Files, that_are_read_only_stop_the_removal_of_their_tree)
{
    Put("t/a");
    SetFileAttributesA(Native("t\\a").c_str(), FILE_ATTRIBUTE_READONLY);
    EXPECT_EQ("could not remove file [" + In("t\\a").Path() + "]: Win32 error 5",
              Failure<FileError>([&] { RemoveDirectory(In("t")); }));
    SetFileAttributesA(Native("t\\a").c_str(), FILE_ATTRIBUTE_NORMAL);
    RemoveDirectory(In("t"));
    EXPECT_FALSE(Exists("t"));
}

// A reparse point that this host cannot make: the folder "odd" with the tag below.
DWORD tagOfOdd = 0;
DWORD(WINAPI* realAttributes)(LPCSTR) = nullptr;
HANDLE(WINAPI* realFindFirst)(LPCSTR, LPWIN32_FIND_DATAA) = nullptr;

bool IsOdd(LPCSTR path)
{
    return std::string_view(path).ends_with("odd");
}

DWORD WINAPI OddAttributes(LPCSTR path)
{
    return realAttributes(path) | (IsOdd(path) ? FILE_ATTRIBUTE_REPARSE_POINT : 0);
}

HANDLE WINAPI FindOdd(LPCSTR pattern, LPWIN32_FIND_DATAA found)
{
    const HANDLE search = realFindFirst(pattern, found);
    if (IsOdd(pattern)) {
        found->dwReserved0 = tagOfOdd;
    }
    return search;
}

struct FilesInAnOddFolder : Files {
    FilesInAnOddFolder()
    {
        realAttributes = attributes_.Original<DWORD WINAPI(LPCSTR)>();
        realFindFirst = find_.Original<HANDLE WINAPI(LPCSTR, LPWIN32_FIND_DATAA)>();
        Put("t/odd/a");
    }

    ImportPatch attributes_{"GetFileAttributesA", OddAttributes};
    ImportPatch find_{"FindFirstFileA", FindOdd};
};

TEST_F(FilesInAnOddFolder, that_is_merely_stored_in_another_way_go_with_their_tree)
{
    tagOfOdd = 0x80000013; // IO_REPARSE_TAG_DEDUP
    RemoveDirectory(In("t"));
    EXPECT_FALSE(Exists("t"));
}

TEST_F(FilesInAnOddFolder, that_leads_elsewhere_or_may_do_so_are_not_touched)
{
    for (const DWORD tag :
         {DWORD{IO_REPARSE_TAG_SYMLINK}, DWORD{IO_REPARSE_TAG_MOUNT_POINT}, DWORD{0}}) {
        tagOfOdd = tag;
        EXPECT_THROW(RemoveDirectory(In("t")), FileError) << tag; // it is no real link: not empty
        EXPECT_EQ("x", Text("t/odd/a"));
    }
}

TEST_F(Files, behind_a_link_survive_the_removal_of_the_tree_that_holds_the_link)
{
    Put("target/precious");
    Put("t/a");
    const auto link = folder_.Path() / "t" / "link";
    std::error_code error;
    fs::create_directory_symlink(folder_.Path() / "target", link, error);
    if (error) {
        const std::string command = "cmd /c mklink /J \"" + Native("t\\link") + "\" \"" +
                                    Native("target") + "\" >nul 2>nul";
        ASSERT_EQ(0, std::system(command.c_str())) << "the host makes neither link nor junction";
    }
    RemoveDirectory(In("t"));
    EXPECT_FALSE(Exists("t"));
    EXPECT_EQ("x", Text("target/precious"));
}

TEST_F(Files, or_folders_or_nothing_are_removed_as_what_they_are)
{
    EXPECT_NO_THROW(Remove(In("missing")));
    Put("a");
    Remove(In("a"));
    EXPECT_FALSE(Exists("a"));
    Put("t/a");
    Remove(In("t"));
    EXPECT_FALSE(Exists("t"));
}

TEST_F(Files, are_copied_into_a_folder_under_their_own_names)
{
    Put("a.txt", "new");
    fs::create_directory(folder_.Path() / "to");
    CopyTo(In("a.txt"), Native("to"));
    EXPECT_EQ("new", Text("to/a.txt"));
    EXPECT_EQ("new", Text("a.txt"));
}

TEST_F(Files, replace_whatever_stands_at_their_target)
{
    Put("a.txt", "new");
    Put("to/a.txt", "old");
    CopyTo(In("a.txt"), Native("to"));
    EXPECT_EQ("new", Text("to/a.txt"));
    fs::remove(folder_.Path() / "to/a.txt");
    Put("to/a.txt/inside");
    CopyTo(In("a.txt"), Native("to"));
    EXPECT_EQ("new", Text("to/a.txt"));
}

TEST_F(Files, and_folders_of_a_tree_are_copied_depth_first)
{
    Put("t/a", "1");
    Put("t/s/b", "2");
    fs::create_directories(folder_.Path() / "t/empty");
    CopyTo(In("t"), Native("to"));
    EXPECT_EQ("1", Text("to/t/a"));
    EXPECT_EQ("2", Text("to/t/s/b"));
    EXPECT_TRUE(Exists("to/t/empty"));
}

TEST_F(Files, that_cannot_be_copied_raise_with_both_paths)
{
    Put("a.txt");
    EXPECT_EQ("cannot copy " + In("a.txt").Path() + " to " + In("missing\\a.txt").Path(),
              Failure<std::runtime_error>([&] { CopyTo(In("a.txt"), Native("missing")); }));
}

TEST_F(Files, that_do_not_exist_end_a_copy_after_the_target_was_made)
{
    EXPECT_EQ(In("missing").Path() + " is not a directory",
              Failure<std::runtime_error>([&] { CopyTo(In("missing"), Native("to")); }));
    EXPECT_TRUE(fs::is_directory(folder_.Path() / "to/missing"));
}

TEST_F(Files, in_a_deep_tree_are_made_and_removed_up_to_the_systems_length_limit)
{
    File deepest = In("deep");
    CreateDirectory(deepest);
    int levels = 0;
    while (deepest.Path().size() + std::string("\\d\\*").size() < MAX_PATH) {
        deepest = deepest.Child("d");
        CreateDirectory(deepest);
        ++levels;
    }
    EXPECT_LT(50, levels);
    RemoveDirectory(In("deep"));
    EXPECT_FALSE(Exists("deep"));
}

TEST_F(Files, with_a_path_beyond_the_systems_length_limit_raise_on_every_operation)
{
    const File tooLong(In("x").Path() + std::string(300, 'n'));
    EXPECT_EQ(0U, Failure<FileError>([&] {
                      CreateDirectory(tooLong);
                  }).find("could not create directory [" + tooLong.Path() + "]: Win32 error "));
    EXPECT_EQ(0U, Failure<FileError>([&] {
                      RemoveFile(tooLong);
                  }).find("could not remove file [" + tooLong.Path() + "]: Win32 error "));
    EXPECT_EQ(
        0U, Failure<FileError>([&] {
                ForEachEntry(tooLong, [](const File&, bool) {});
            }).find("could not enumerate the contents of [" + tooLong.Path() + "]: Win32 error "));
    EXPECT_EQ(tooLong.Path() + " is not a directory", Failure<std::runtime_error>([&] {
                  EnumerateDirectory(tooLong, [](const File&, bool) {});
              }));
}

} // namespace vqrx::test
