// A damaged log file that another program has open. Windows then refuses to rename it.
#include "log_perf/ring/SetAside.h"

#include "FileContent.h"
#include "ImportPatch.h"
#include "TempFolder.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace vqrx::test {
namespace {

int __cdecl RefuseToStore(int, const void*, unsigned)
{
    errno = ENOSPC;
    return -1;
}

class SetAsideCopy : public ::testing::Test {
protected:
    SetAsideCopy()
    {
        std::ofstream(name_, std::ios::binary) << "newest";
        std::ofstream(kept_, std::ios::binary) << "older, and longer";
        reader_.open(name_, std::ios::binary);
    }

    std::size_t FilesInFolder() const
    {
        const std::filesystem::directory_iterator files(folder_.Path());
        return static_cast<std::size_t>(std::distance(begin(files), end(files)));
    }

    const TempFolder folder_;
    const std::string name_ = folder_.File("a.log");
    const std::string kept_ = folder_.File("a.log.damaged");
    std::ifstream reader_; // the other program
};

TEST_F(SetAsideCopy, A_file_that_is_open_elsewhere_is_copied_and_emptied)
{
    EXPECT_TRUE(log::log_perf::v2::SetAside(name_, kept_));
    EXPECT_EQ("newest", FileContent(kept_));
    EXPECT_TRUE(std::filesystem::exists(name_));
    EXPECT_EQ("", FileContent(name_));
    EXPECT_EQ(2U, FilesInFolder());
}

// The supervisor may have all rights: whoever can make files beside the log must not lead the copy
// into a file that he may not change.
TEST_F(SetAsideCopy, A_file_with_a_second_name_where_the_copy_is_made_stays_as_it_is)
{
    const std::string precious = folder_.File("precious");
    std::ofstream(precious, std::ios::binary) << "precious";
    std::filesystem::create_hard_link(precious, kept_ + ".tmp");
    EXPECT_TRUE(log::log_perf::v2::SetAside(name_, kept_));
    EXPECT_EQ("newest", FileContent(kept_));
    EXPECT_EQ("precious", FileContent(precious));
}

TEST_F(SetAsideCopy, A_copy_that_fails_leaves_both_files_as_they_are)
{
    {
        const ImportPatch patch("_write", RefuseToStore);
        EXPECT_FALSE(log::log_perf::v2::SetAside(name_, kept_));
    }
    EXPECT_EQ("older, and longer", FileContent(kept_));
    EXPECT_EQ("newest", FileContent(name_));
    EXPECT_EQ(2U, FilesInFolder());
}

decltype(&MoveFileExA) realMove = nullptr;

// Wine replaces a read-only file. Windows does not.
BOOL WINAPI MoveAsWindowsDoes(LPCSTR from, LPCSTR to, DWORD flags)
{
    const DWORD attributes = GetFileAttributesA(to);
    if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_READONLY) != 0) {
        SetLastError(ERROR_ACCESS_DENIED);
        return FALSE;
    }
    return realMove(from, to, flags);
}

TEST_F(SetAsideCopy, A_read_only_file_is_replaced)
{
    reader_.close();
    SetFileAttributesA(kept_.c_str(), FILE_ATTRIBUTE_READONLY);
    const ImportPatch patch("MoveFileExA", MoveAsWindowsDoes, realMove);
    EXPECT_TRUE(log::log_perf::v2::SetAside(name_, kept_));
    EXPECT_EQ("newest", FileContent(kept_));
    EXPECT_FALSE(std::filesystem::exists(name_));
}

// Also when the damaged file is read-only and open elsewhere, so that it is copied and emptied.
TEST_F(SetAsideCopy, Read_only_attributes_do_not_keep_a_copy_from_being_made)
{
    SetFileAttributesA(name_.c_str(), FILE_ATTRIBUTE_READONLY);
    SetFileAttributesA(kept_.c_str(), FILE_ATTRIBUTE_READONLY);
    const ImportPatch patch("MoveFileExA", MoveAsWindowsDoes, realMove);
    EXPECT_TRUE(log::log_perf::v2::SetAside(name_, kept_));
    EXPECT_EQ("newest", FileContent(kept_));
    EXPECT_EQ("", FileContent(name_));
    EXPECT_EQ(0U, GetFileAttributesA(name_.c_str()) & FILE_ATTRIBUTE_READONLY);
}

} // namespace
} // namespace vqrx::test
