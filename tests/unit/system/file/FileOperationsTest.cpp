#include <windows.h>

#include "file/FileOperations.h"

#include "FilesFixture.h"
#include "ImportPatch.h"
#include "file/DirectoryListing.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <stdexcept>
#include <string_view>

namespace vqrx::test {
namespace {

using namespace system::file::v2;
namespace fs = std::filesystem;

class FileOperations : public Files {};

// Windows takes no path of a folder with more characters: a file with a name of 8.3 must still fit.
constexpr std::size_t kLongestFolderPath = MAX_PATH - 12 - 1;

decltype(&FindFirstFileA) systemFindFirst = nullptr;
HANDLE WINAPI FindNoEntriesOfDeep(LPCSTR pattern, LPWIN32_FIND_DATAA found)
{
    if (std::string_view(pattern).ends_with("deep\\*")) {
        SetLastError(ERROR_PATH_NOT_FOUND); // so Windows answers if this pattern is too long
        return INVALID_HANDLE_VALUE;
    }
    return systemFindFirst(pattern, found);
}

} // namespace

TEST_F(FileOperations, CreateDirectory_creates_one_level)
{
    CreateDirectory(In("a"));
    EXPECT_TRUE(Exists("a"));
    EXPECT_EQ("could not create directory [" + In("a").Path() + "]: Win32 error 183",
              Failure<FileError>([&] { CreateDirectory(In("a")); }));
    EXPECT_EQ("could not create directory [" + In("x\\y").Path() + "]: Win32 error 3",
              Failure<FileError>([&] { CreateDirectory(In("x\\y")); }));
}

TEST_F(FileOperations, CreateDirectories_creates_the_missing_parents)
{
    CreateDirectories(In("a\\b\\c"));
    EXPECT_TRUE(Exists("a/b/c"));
    EXPECT_NO_THROW(CreateDirectories(In("a\\b\\c")));
}

TEST_F(FileOperations, CreateDirectories_replaces_a_file_with_the_name_of_a_folder)
{
    Put("a");
    CreateDirectories(In("a"));
    EXPECT_TRUE(fs::is_directory(folder_.Path() / "a"));
    Put("b");
    CreateDirectories(In("b\\c"));
    EXPECT_TRUE(fs::is_directory(folder_.Path() / "b/c"));
}

TEST_F(FileOperations, CreateDirectories_of_a_hundred_thousand_levels_fails_at_the_length_limit)
{
    std::string path = In("deep").Path();
    for (int level = 0; level < 100000; ++level) {
        path += "\\d";
    }
    const std::string failure = Failure<FileError>([&] { CreateDirectories(File(path)); });
    EXPECT_EQ(0U, failure.find("could not create directory [" + In("deep\\d\\d").Path()))
        << failure.substr(0, 300);
    EXPECT_TRUE(Exists("deep/d/d"));
}

TEST_F(FileOperations, RemoveFile_removes_a_file_or_raises_the_error_of_the_system)
{
    Put("a");
    RemoveFile(In("a"));
    EXPECT_FALSE(Exists("a"));
    EXPECT_EQ("could not remove file [" + In("a").Path() + "]: Win32 error 2",
              Failure<FileError>([&] { RemoveFile(In("a")); }));
}

TEST_F(FileOperations, RemoveDirectory_removes_a_tree)
{
    Put("t/a");
    Put("t/s/b");
    Put("t/s/u/c");
    fs::create_directories(folder_.Path() / "t/empty");
    RemoveDirectory(In("t"));
    EXPECT_FALSE(Exists("t"));
}

TEST_F(FileOperations, RemoveDirectory_of_a_missing_folder_fails)
{
    const std::string failure = Failure<FileError>([&] { RemoveDirectory(In("missing")); });
    EXPECT_EQ(0U, failure.find("could not remove directory [" + In("missing").Path() +
                               "]: Win32 error "));
}

TEST_F(FileOperations, A_read_only_file_stops_the_removal_of_its_tree)
{
    Put("t/a");
    SetFileAttributesA(Native("t\\a").c_str(), FILE_ATTRIBUTE_READONLY);
    EXPECT_EQ("could not remove file [" + In("t\\a").Path() + "]: Win32 error 5",
              Failure<FileError>([&] { RemoveDirectory(In("t")); }));
    SetFileAttributesA(Native("t\\a").c_str(), FILE_ATTRIBUTE_NORMAL);
    RemoveDirectory(In("t"));
    EXPECT_FALSE(Exists("t"));
}

TEST_F(FileOperations, Remove_removes_a_file_or_a_folder_and_ignores_a_missing_path)
{
    EXPECT_NO_THROW(Remove(In("missing")));
    Put("a");
    Remove(In("a"));
    EXPECT_FALSE(Exists("a"));
    Put("t/a");
    Remove(In("t"));
    EXPECT_FALSE(Exists("t"));
}

TEST_F(FileOperations, CopyTo_copies_a_file_and_keeps_its_name)
{
    Put("a.txt", "new");
    fs::create_directory(folder_.Path() / "to");
    CopyTo(In("a.txt"), Native("to"));
    EXPECT_EQ("new", Text("to/a.txt"));
    EXPECT_EQ("new", Text("a.txt"));
}

TEST_F(FileOperations, A_copied_file_replaces_the_file_or_folder_at_its_target)
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

TEST_F(FileOperations, CopyTo_copies_a_tree)
{
    Put("t/a", "1");
    Put("t/s/b", "2");
    fs::create_directories(folder_.Path() / "t/empty");
    CopyTo(In("t"), Native("to"));
    EXPECT_EQ("1", Text("to/t/a"));
    EXPECT_EQ("2", Text("to/t/s/b"));
    EXPECT_TRUE(Exists("to/t/empty"));
}

TEST_F(FileOperations, A_folder_that_cannot_be_listed_stops_the_copy_of_its_tree)
{
    Put("t/deep/a");
    const ImportPatch patch("FindFirstFileA", FindNoEntriesOfDeep, systemFindFirst);
    EXPECT_EQ("could not enumerate the contents of [" + In("t\\deep").Path() + "]: Win32 error 3",
              Failure<FileError>([&] { CopyTo(In("t"), Native("to")); }));
}

TEST_F(FileOperations, A_copy_of_a_file_to_itself_is_refused_and_the_file_stays)
{
    Put("to/a.txt", "kept");
    const File file = In("to\\a.txt");
    for (const std::string to : {"to", "TO", "to\\..\\to"}) {
        EXPECT_EQ("cannot copy " + file.Path() + " to " + In(to + "\\a.txt").Path(),
                  Failure<std::runtime_error>([&] { CopyTo(file, Native(to)); }));
        ASSERT_EQ("kept", Text("to/a.txt")) << to;
    }
}

TEST_F(FileOperations, A_copy_of_a_file_over_a_folder_that_contains_it_is_refused)
{
    Put("to/name/sub/name", "kept");
    const File file = In("to\\name\\sub\\name");
    EXPECT_EQ("cannot copy " + file.Path() + " to " + In("to\\name").Path(),
              Failure<std::runtime_error>([&] { CopyTo(file, Native("to")); }));
    EXPECT_EQ("kept", Text("to/name/sub/name"));
}

TEST_F(FileOperations, A_copy_of_a_folder_to_itself_or_into_itself_is_refused)
{
    Put("t/s/a", "kept");
    for (const std::string to : {".", "t", "T\\s", "t\\new\\deep", "t\\..\\t"}) {
        EXPECT_EQ("cannot copy " + In("t").Path() + " to " + In(to + "\\t").Path(),
                  Failure<std::runtime_error>([&] { CopyTo(In("t"), Native(to)); }));
        EXPECT_FALSE(Exists("t/t"));
        EXPECT_FALSE(Exists("t/new"));
        ASSERT_EQ("kept", Text("t/s/a")) << to;
    }
}

TEST_F(FileOperations, A_file_that_cannot_be_copied_raises_both_paths)
{
    Put("a.txt");
    EXPECT_EQ("cannot copy " + In("a.txt").Path() + " to " + In("missing\\a.txt").Path(),
              Failure<std::runtime_error>([&] { CopyTo(In("a.txt"), Native("missing")); }));
}

TEST_F(FileOperations, CopyTo_of_a_missing_source_fails_after_the_target_was_created)
{
    EXPECT_EQ(In("missing").Path() + " is not a directory",
              Failure<std::runtime_error>([&] { CopyTo(In("missing"), Native("to")); }));
    EXPECT_TRUE(fs::is_directory(folder_.Path() / "to/missing"));
}

TEST_F(FileOperations, A_tree_as_deep_as_the_length_limit_allows_is_created_and_removed)
{
    File deepest = In("deep");
    CreateDirectory(deepest);
    int levels = 0;
    while (deepest.Path().size() + std::string("\\d").size() <= kLongestFolderPath) {
        deepest = deepest.Child("d");
        CreateDirectory(deepest);
        ++levels;
    }
    EXPECT_LT(50, levels);
    RemoveDirectory(In("deep"));
    EXPECT_FALSE(Exists("deep"));
}

TEST_F(FileOperations, Every_operation_fails_for_a_path_beyond_the_length_limit)
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
