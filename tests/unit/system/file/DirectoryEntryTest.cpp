#include "file/DirectoryEntry.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>

namespace vqrx::test {
namespace {

using system::file::v2::DirectoryEntry;
using system::file::v2::EntryFrom;

constexpr DWORD kLow = 100;

// Gives each number of a find record a value of its own.
template <typename Record>
Record Numbered()
{
    Record record{};
    record.dwFileAttributes = 1;
    record.ftCreationTime = {kLow + 2, 2};
    record.ftLastAccessTime = {kLow + 3, 3};
    record.ftLastWriteTime = {kLow + 4, 4};
    record.nFileSizeHigh = 5;
    record.nFileSizeLow = 6;
    record.dwReserved0 = 7;
    record.dwReserved1 = 8;
    return record;
}

void ExpectTime(DWORD number, const FILETIME& time)
{
    EXPECT_EQ(number, time.dwHighDateTime);
    EXPECT_EQ(kLow + number, time.dwLowDateTime);
}

void ExpectNumbers(const DirectoryEntry& entry)
{
    EXPECT_EQ(1U, entry.attributes);
    ExpectTime(2, entry.creationTime);
    ExpectTime(3, entry.lastAccessTime);
    ExpectTime(4, entry.lastWriteTime);
    EXPECT_EQ(5U, entry.sizeHigh);
    EXPECT_EQ(6U, entry.sizeLow);
    EXPECT_EQ(7U, entry.reserved0);
    EXPECT_EQ(8U, entry.reserved1);
}

} // namespace

TEST(DirectoryEntry, An_ANSI_record_is_taken_over_as_it_stands)
{
    auto record = Numbered<WIN32_FIND_DATAA>();
    std::strcpy(record.cFileName, "caf\xE9 long.txt");
    std::strcpy(record.cAlternateFileName, "CAF\xE9~1.TXT");
    const DirectoryEntry entry = EntryFrom(record);
    ExpectNumbers(entry);
    EXPECT_EQ("caf\xE9 long.txt", entry.name);
    EXPECT_EQ("CAF\xE9~1.TXT", entry.shortName);
}

TEST(DirectoryEntry, The_names_of_a_wide_record_become_UTF8)
{
    auto record = Numbered<WIN32_FIND_DATAW>();
    std::wstring(L"caf\u00E9 long.txt").copy(record.cFileName, 259);
    std::wstring(L"CAF\u00C9~1.TXT").copy(record.cAlternateFileName, 13);
    const DirectoryEntry entry = EntryFrom(record);
    ExpectNumbers(entry);
    EXPECT_EQ("caf\xC3\xA9 long.txt", entry.name);
    EXPECT_EQ("CAF\xC3\x89~1.TXT", entry.shortName);
}

} // namespace vqrx::test
