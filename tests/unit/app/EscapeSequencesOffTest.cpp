#include "EscapeSequencesOff.h"

#include "ImportPatch.h"

#include <windows.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

namespace vqrx::test {
namespace {

using app::v0::EscapeSequencesOff;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr DWORD kOtherModes = ENABLE_PROCESSED_OUTPUT | ENABLE_WRAP_AT_EOL_OUTPUT;
constexpr DWORD kEscapes = 4; // ENABLE_VIRTUAL_TERMINAL_PROCESSING

std::optional<DWORD> screenMode; // nothing: there is no console
BOOL answerToSetScreen = TRUE;
std::vector<DWORD> screenModesSet;
int screensOpened = 0;

HANDLE WINAPI OpenScreen(LPCSTR name, DWORD access, DWORD, LPSECURITY_ATTRIBUTES, DWORD, DWORD,
                         HANDLE)
{
    EXPECT_EQ(std::string(name), "CONOUT$");
    EXPECT_EQ(access, GENERIC_READ | GENERIC_WRITE);
    ++screensOpened;
    return screenMode ? CreateEventA(nullptr, TRUE, FALSE, nullptr) : INVALID_HANDLE_VALUE;
}

BOOL WINAPI GetScreenMode(HANDLE, LPDWORD mode)
{
    *mode = *screenMode;
    return TRUE;
}

BOOL WINAPI SetScreenMode(HANDLE, DWORD mode)
{
    screenModesSet.push_back(mode);
    return answerToSetScreen;
}

struct EscapeSequencesOffTest : testing::Test {
    EscapeSequencesOffTest()
    {
        screenMode.reset();
        answerToSetScreen = TRUE;
        screenModesSet.clear();
        screensOpened = 0;
    }

    const ImportPatch open{"CreateFileA", OpenScreen};
    const ImportPatch get{"GetConsoleMode", GetScreenMode};
    const ImportPatch set{"SetConsoleMode", SetScreenMode};
};

TEST_F(EscapeSequencesOffTest, Mode_is_off_while_the_object_lives_and_restored_afterwards)
{
    screenMode = kOtherModes | kEscapes;
    {
        const EscapeSequencesOff off;
        EXPECT_THAT(screenModesSet, ElementsAre(kOtherModes));
    }
    EXPECT_THAT(screenModesSet, ElementsAre(kOtherModes, kOtherModes | kEscapes));
}

TEST_F(EscapeSequencesOffTest, Mode_that_is_off_already_is_not_touched)
{
    screenMode = kOtherModes;
    {
        const EscapeSequencesOff off;
    }
    EXPECT_EQ(screensOpened, 1);
    EXPECT_THAT(screenModesSet, IsEmpty());
}

TEST_F(EscapeSequencesOffTest, Nothing_is_done_without_a_console)
{
    {
        const EscapeSequencesOff off;
    }
    EXPECT_EQ(screensOpened, 1);
    EXPECT_THAT(screenModesSet, IsEmpty());
}

TEST_F(EscapeSequencesOffTest, Mode_that_Windows_refuses_to_change_is_not_restored)
{
    screenMode = kEscapes;
    answerToSetScreen = FALSE;
    {
        const EscapeSequencesOff off;
    }
    EXPECT_EQ(screenModesSet.size(), 1U);
}

} // namespace
} // namespace vqrx::test
