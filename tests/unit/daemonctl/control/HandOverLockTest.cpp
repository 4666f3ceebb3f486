#include "HandOverLock.h"

#include "ImportPatch.h"
#include "TempFolder.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace vqrx::test {
namespace {

using client::v0::HandOverLock;

class HandOverLockTest : public ::testing::Test {
protected:
    const TempFolder folder_;
    const std::string file_ = folder_.File("x.lock");
    std::vector<std::string> waits_;
    std::optional<HandOverLock> held_;
    std::vector<std::string> failures_;
    // Releases the lock as soon as somebody waits for it.
    const client::v0::Reporter reporter_{
        [](const std::string&) {},
        [this](const std::string& line) {
            waits_.push_back(line);
            held_.reset();
        },
        [this](const std::string& line) { failures_.push_back(line); }};
};

TEST_F(HandOverLockTest, Second_holder_waits_until_the_first_one_has_gone)
{
    held_.emplace(file_, reporter_, 0);
    EXPECT_TRUE(waits_.empty());
    {
        const HandOverLock second(file_, reporter_, 60000);
        EXPECT_EQ(waits_, std::vector<std::string>{"waiting until another program has handed "
                                                   "daemons over or applied a fleet file"});
        EXPECT_THROW(HandOverLock(file_, reporter_, 0), std::runtime_error);
    }
    EXPECT_FALSE(std::filesystem::exists(file_));
}

ULONGLONG heldUntil = 0;
int refusals = 0;
decltype(CreateFileW)* openFile = nullptr;

// Another program holds the file until `heldUntil`. Then Windows is deleting it for three looks.
HANDLE WINAPI RefuseForATime(LPCWSTR name, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES rights,
                             DWORD creation, DWORD flags, HANDLE like)
{
    const bool isHeld = GetTickCount64() < heldUntil;
    if (isHeld || refusals-- > 0) {
        SetLastError(isHeld ? ERROR_SHARING_VIOLATION : ERROR_ACCESS_DENIED);
        return INVALID_HANDLE_VALUE;
    }
    return openFile(name, access, share, rights, creation, flags, like);
}

TEST_F(HandOverLockTest, File_that_Windows_deletes_after_a_long_hold_is_waited_for)
{
    heldUntil = GetTickCount64() + 1500;
    refusals = 3;
    const ImportPatch patch("CreateFileW", RefuseForATime, openFile);
    const HandOverLock lock(file_, reporter_, 60000);
    EXPECT_TRUE(failures_.empty()) << failures_.front();
    EXPECT_TRUE(std::filesystem::exists(file_));
}

TEST_F(HandOverLockTest, Folder_in_which_nobody_can_write_keeps_nobody_out_and_is_reported)
{
    const std::string file = folder_.File("no\\such.lock");
    EXPECT_NO_THROW(HandOverLock(file, reporter_, 0));
    EXPECT_TRUE(waits_.empty());
    EXPECT_EQ(failures_,
              std::vector<std::string>{"nothing keeps another program from handing daemons over "
                                       "at the same time: " +
                                       file + " cannot be made (Windows error 3)"});
}

} // namespace
} // namespace vqrx::test
