#include "QuickEditOff.h"

#include "ImportPatch.h"

#include <windows.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

namespace vqrx::test {
namespace {

using app::v0::QuickEditOff;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr DWORD kOthers = ENABLE_PROCESSED_INPUT | ENABLE_LINE_INPUT | ENABLE_INSERT_MODE;

std::optional<DWORD> consoleMode; // nothing: there is no console
BOOL answerToSet = TRUE;
std::vector<DWORD> modesSet;
int opened = 0;

HANDLE WINAPI OpenConsole(LPCSTR name, DWORD access, DWORD, LPSECURITY_ATTRIBUTES, DWORD, DWORD,
                          HANDLE)
{
    EXPECT_EQ(std::string(name), "CONIN$");
    EXPECT_EQ(access, GENERIC_READ | GENERIC_WRITE);
    ++opened;
    return consoleMode ? CreateEventA(nullptr, TRUE, FALSE, nullptr) : INVALID_HANDLE_VALUE;
}

BOOL WINAPI GetMode(HANDLE, LPDWORD mode)
{
    *mode = *consoleMode;
    return TRUE;
}

BOOL WINAPI SetMode(HANDLE, DWORD mode)
{
    modesSet.push_back(mode);
    return answerToSet;
}

struct QuickEditOffTest : testing::Test {
    QuickEditOffTest()
    {
        consoleMode.reset();
        answerToSet = TRUE;
        modesSet.clear();
        opened = 0;
    }

    const ImportPatch open{"CreateFileA", OpenConsole};
    const ImportPatch get{"GetConsoleMode", GetMode};
    const ImportPatch set{"SetConsoleMode", SetMode};
};

TEST_F(QuickEditOffTest, Mode_is_off_while_the_object_lives_and_restored_afterwards)
{
    consoleMode = kOthers | ENABLE_QUICK_EDIT_MODE;
    {
        const QuickEditOff off;
        EXPECT_THAT(modesSet, ElementsAre(kOthers | ENABLE_EXTENDED_FLAGS));
    }
    EXPECT_THAT(modesSet, ElementsAre(kOthers | ENABLE_EXTENDED_FLAGS,
                                      kOthers | ENABLE_QUICK_EDIT_MODE | ENABLE_EXTENDED_FLAGS));
}

TEST_F(QuickEditOffTest, Mode_that_is_off_already_is_not_touched)
{
    consoleMode = kOthers | ENABLE_EXTENDED_FLAGS;
    {
        const QuickEditOff off;
    }
    EXPECT_EQ(opened, 1);
    EXPECT_THAT(modesSet, IsEmpty());
}

TEST_F(QuickEditOffTest, Nothing_is_done_without_a_console)
{
    {
        const QuickEditOff off;
    }
    EXPECT_EQ(opened, 1);
    EXPECT_THAT(modesSet, IsEmpty());
}

TEST_F(QuickEditOffTest, Mode_that_Windows_refuses_to_change_is_not_restored)
{
    consoleMode = ENABLE_QUICK_EDIT_MODE;
    answerToSet = FALSE;
    {
        const QuickEditOff off;
    }
    EXPECT_EQ(modesSet.size(), 1U);
}

} // namespace
} // namespace vqrx::test
