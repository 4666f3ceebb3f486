#include "ContentRights.h"

#include "ImportPatch.h"
#include "ObjectRights.h"
#include "OpenToAll.h"
#include "TempFolder.h"

#include <windows.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cwchar>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace vqrx::test {
namespace {

using client::v0::ContentRights;
using client::v0::EachBelow;
using client::v0::ObjectRights;
using client::v0::ReadContentRights;
using client::v0::TrustedAdministrators;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

class ContentRightsTest : public testing::Test {
protected:
    ContentRightsTest()
    {
        std::filesystem::create_directories(folder_.Path() / "inner" / "deep");
        for (const char* const file : {"a.exe", "inner\\b.dll", "inner\\deep\\c.bat"}) {
            std::ofstream(folder_.File(file)) << "x";
        }
    }

    [[nodiscard]] std::string Root() const { return folder_.Path().string(); }

    // The paths below the folder, each without the folder; a path that cannot be read has its
    // Windows error behind it.
    [[nodiscard]] std::vector<std::string> Paths() const
    {
        std::vector<std::string> paths;
        EachBelow(Root(), [&](const ObjectRights& rights) {
            paths.push_back(rights.path.substr(std::min(Root().size() + 1, rights.path.size())));
            if (rights.error != 0) {
                paths.back() += " " + std::to_string(rights.error);
            }
            return true;
        });
        return paths;
    }

    const TempFolder folder_;
};

TEST_F(ContentRightsTest, Everything_below_is_read_and_a_folder_before_what_lies_in_it)
{
    const std::vector<std::string> paths = Paths();
    EXPECT_THAT(paths, UnorderedElementsAre("a.exe", "inner", "inner\\b.dll", "inner\\deep",
                                            "inner\\deep\\c.bat"));
    const auto place = [&](const char* path) {
        return std::find(paths.begin(), paths.end(), path);
    };
    EXPECT_LT(place("inner"), place("inner\\b.dll"));
    EXPECT_LT(place("inner\\deep"), place("inner\\deep\\c.bat"));
}

TEST_F(ContentRightsTest, Below_a_file_and_a_missing_folder_is_nothing)
{
    for (const char* const path : {"a.exe", "missing"}) {
        EachBelow(folder_.File(path), [](const ObjectRights& rights) {
            ADD_FAILURE() << rights.path;
            return true;
        });
    }
}

TEST_F(ContentRightsTest, What_everybody_may_change_is_found_at_any_depth)
{
    EXPECT_THAT(ReadContentRights(Root(), TrustedAdministrators()).weak, IsEmpty());
    OpenToAll(folder_.File("inner\\deep\\c.bat"));
    const ContentRights content = ReadContentRights(Root(), TrustedAdministrators());
    ASSERT_EQ(1U, content.weak.size());
    EXPECT_EQ(folder_.File("inner\\deep\\c.bat"), content.weak[0].path);
    EXPECT_EQ(5U, content.looked);
    EXPECT_TRUE(content.complete);
    EXPECT_EQ(0U, content.further);
}

TEST_F(ContentRightsTest,
       Weak_files_beyond_the_limit_are_counted_and_a_rest_that_was_not_read_is_known)
{
    OpenToAll(folder_.File("a.exe"));
    OpenToAll(folder_.File("inner"));
    OpenToAll(folder_.File("inner\\b.dll"));
    const ContentRights named = ReadContentRights(Root(), TrustedAdministrators(), {5, 1});
    EXPECT_EQ(1U, named.weak.size());
    EXPECT_EQ(2U, named.further);
    EXPECT_TRUE(named.complete);
    const ContentRights part = ReadContentRights(Root(), TrustedAdministrators(), {4, 20});
    EXPECT_EQ(4U, part.looked);
    EXPECT_FALSE(part.complete);
}

decltype(GetFileAttributesW)* readAttributes = nullptr;

// Links cannot be made everywhere: "inner" looks like one.
DWORD WINAPI SayLink(LPCWSTR path)
{
    const DWORD attributes = readAttributes(path);
    return std::wstring_view(path).ends_with(L"inner") ? attributes | FILE_ATTRIBUTE_REPARSE_POINT
                                                       : attributes;
}

TEST_F(ContentRightsTest, A_link_is_read_and_not_entered)
{
    const ImportPatch patch("GetFileAttributesW", SayLink, readAttributes);
    EXPECT_THAT(Paths(), UnorderedElementsAre("a.exe", "inner"));
    EachBelow(folder_.File("inner"), [](const ObjectRights& rights) {
        ADD_FAILURE() << rights.path;
        return true;
    });
}

DWORD absence = ERROR_FILE_NOT_FOUND;

DWORD WINAPI SayGone(LPCWSTR path)
{
    if (std::wstring_view(path).ends_with(L"b.dll")) {
        SetLastError(absence);
        return INVALID_FILE_ATTRIBUTES;
    }
    return readAttributes(path);
}

TEST_F(ContentRightsTest, A_file_that_disappears_meanwhile_is_left_out_alone_or_with_its_folder)
{
    const ImportPatch patch("GetFileAttributesW", SayGone, readAttributes);
    for (const DWORD error : {ERROR_FILE_NOT_FOUND, ERROR_PATH_NOT_FOUND}) {
        absence = error;
        EXPECT_THAT(Paths(),
                    UnorderedElementsAre("a.exe", "inner", "inner\\deep", "inner\\deep\\c.bat"));
    }
}

decltype(FindFirstFileExW)* findFirst = nullptr;

HANDLE WINAPI MissDeep(LPCWSTR name, FINDEX_INFO_LEVELS level, LPVOID data,
                       FINDEX_SEARCH_OPS search, LPVOID filter, DWORD flags)
{
    if (std::wstring_view(name).ends_with(L"deep\\*")) {
        SetLastError(ERROR_PATH_NOT_FOUND);
        return INVALID_HANDLE_VALUE;
    }
    return findFirst(name, level, data, search, filter, flags);
}

TEST_F(ContentRightsTest, A_folder_that_disappears_before_it_is_listed_counts_as_empty)
{
    const ImportPatch patch("FindFirstFileExW", MissDeep, findFirst);
    EXPECT_THAT(Paths(), UnorderedElementsAre("a.exe", "inner", "inner\\b.dll", "inner\\deep"));
}

HANDLE WINAPI RefuseDeep(LPCWSTR name, FINDEX_INFO_LEVELS level, LPVOID data,
                         FINDEX_SEARCH_OPS search, LPVOID filter, DWORD flags)
{
    if (std::wstring_view(name).ends_with(L"deep\\*")) {
        SetLastError(ERROR_ACCESS_DENIED);
        return INVALID_HANDLE_VALUE;
    }
    return findFirst(name, level, data, search, filter, flags);
}

TEST_F(ContentRightsTest, A_folder_that_cannot_be_listed_counts_as_weak)
{
    const ImportPatch patch("FindFirstFileExW", RefuseDeep, findFirst);
    EXPECT_THAT(Paths(), UnorderedElementsAre("a.exe", "inner", "inner\\b.dll", "inner\\deep",
                                              "inner\\deep 5"));
    EXPECT_EQ(1U, ReadContentRights(Root(), TrustedAdministrators()).weak.size());
}

decltype(FindNextFileW)* findNext = nullptr;

std::wstring nameInPlace;

// NTFS keeps names that this host does not: one of them stands in place of "c.bat".
BOOL WINAPI ListAnotherName(HANDLE search, LPWIN32_FIND_DATAW entry)
{
    const BOOL found = findNext(search, entry);
    if (std::wstring_view(entry->cFileName) == L"c.bat") { // NOLINT: Windows' own array
        std::wcscpy(entry->cFileName, nameInPlace.c_str());
    }
    return found;
}

TEST_F(ContentRightsTest, A_name_that_no_text_can_hold_counts_as_weak)
{
    nameInPlace = L"c.\xD800";
    const ImportPatch patch("FindNextFileW", ListAnotherName, findNext);
    const ContentRights content = ReadContentRights(Root(), TrustedAdministrators());
    ASSERT_EQ(1U, content.weak.size());
    EXPECT_EQ(ERROR_NO_UNICODE_TRANSLATION, content.weak[0].error);
    EXPECT_THAT(client::v0::Weaknesses(content.weak[0], TrustedAdministrators()),
                ElementsAre("the rights of " + folder_.File("inner\\deep\\c.") +
                            "\xEF\xBF\xBD cannot be read (Windows error 1113)"));
}

// Windows leaves a dot or a blank at the end of a path out, so it would read another file.
TEST_F(ContentRightsTest, A_name_with_a_dot_or_a_blank_at_its_end_counts_as_weak)
{
    const ImportPatch patch("FindNextFileW", ListAnotherName, findNext);
    for (const wchar_t* const name : {L"c.bat.", L"c.bat "}) {
        nameInPlace = name;
        const ContentRights content = ReadContentRights(Root(), TrustedAdministrators());
        ASSERT_EQ(1U, content.weak.size());
        EXPECT_EQ(ERROR_INVALID_NAME, content.weak[0].error);
    }
}

// Windows says of a path of 260 characters or more that it is not there.
DWORD WINAPI MissLongPaths(LPCWSTR path)
{
    if (std::wcslen(path) >= MAX_PATH) {
        SetLastError(ERROR_PATH_NOT_FOUND);
        return INVALID_FILE_ATTRIBUTES;
    }
    return readAttributes(path);
}

TEST_F(ContentRightsTest, A_path_that_is_too_long_to_be_read_counts_as_weak)
{
    nameInPlace = std::wstring(250, L'x');
    const ImportPatch names("FindNextFileW", ListAnotherName, findNext);
    const ImportPatch attributes("GetFileAttributesW", MissLongPaths, readAttributes);
    const ContentRights content = ReadContentRights(Root(), TrustedAdministrators());
    ASSERT_EQ(1U, content.weak.size());
    EXPECT_EQ(ERROR_PATH_NOT_FOUND, content.weak[0].error);
}

} // namespace
} // namespace vqrx::test
