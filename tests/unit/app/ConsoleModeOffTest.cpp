#include "ConsoleModeOff.h"

#include "ImportPatch.h"

#include <windows.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

namespace vqrx::test {
namespace {

using app::v0::ConsoleModeOff;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr DWORD kOthers = 0x0023; // modes that stay as they are
constexpr DWORD kEscapes = 4;     // ENABLE_VIRTUAL_TERMINAL_PROCESSING

// A mode that the class switches off, and its console.
struct Mode {
    ConsoleModeOff (*off)() noexcept;
    const char* console;
    DWORD bit;
    DWORD with; // bits that every change of the mode needs
};

const Mode kModes[] = {
    {ConsoleModeOff::QuickEdit, "CONIN$", ENABLE_QUICK_EDIT_MODE, ENABLE_EXTENDED_FLAGS},
    {ConsoleModeOff::EscapeSequences, "CONOUT$", kEscapes, 0},
};

std::optional<DWORD> consoleMode; // nothing: there is no console
BOOL answerToSet = TRUE;
std::vector<DWORD> modesSet;
std::vector<std::string> opened;

HANDLE WINAPI OpenConsole(LPCSTR name, DWORD access, DWORD, LPSECURITY_ATTRIBUTES, DWORD, DWORD,
                          HANDLE)
{
    EXPECT_EQ(access, GENERIC_READ | GENERIC_WRITE);
    opened.emplace_back(name);
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

class ConsoleModeOffTest : public testing::TestWithParam<Mode> {
protected:
    ConsoleModeOffTest()
    {
        consoleMode.reset();
        answerToSet = TRUE;
        modesSet.clear();
        opened.clear();
    }

    const ImportPatch open{"CreateFileA", OpenConsole};
    const ImportPatch get{"GetConsoleMode", GetMode};
    const ImportPatch set{"SetConsoleMode", SetMode};
};

TEST_P(ConsoleModeOffTest, Mode_is_off_while_the_object_lives_and_restored_afterwards)
{
    consoleMode = kOthers | GetParam().bit;
    const DWORD off = kOthers | GetParam().with;
    {
        const ConsoleModeOff object = GetParam().off();
        EXPECT_THAT(modesSet, ElementsAre(off));
    }
    EXPECT_THAT(modesSet, ElementsAre(off, off | GetParam().bit));
    EXPECT_THAT(opened, ElementsAre(GetParam().console));
}

TEST_P(ConsoleModeOffTest, Mode_that_is_off_already_is_not_touched)
{
    consoleMode = kOthers | GetParam().with;
    {
        const ConsoleModeOff object = GetParam().off();
    }
    EXPECT_THAT(opened, ElementsAre(GetParam().console));
    EXPECT_THAT(modesSet, IsEmpty());
}

TEST_P(ConsoleModeOffTest, Nothing_is_done_without_a_console)
{
    {
        const ConsoleModeOff object = GetParam().off();
    }
    EXPECT_THAT(opened, ElementsAre(GetParam().console));
    EXPECT_THAT(modesSet, IsEmpty());
}

TEST_P(ConsoleModeOffTest, Mode_that_Windows_refuses_to_change_is_not_restored)
{
    consoleMode = GetParam().bit;
    answerToSet = FALSE;
    {
        const ConsoleModeOff object = GetParam().off();
    }
    EXPECT_EQ(modesSet.size(), 1U);
}

INSTANTIATE_TEST_SUITE_P(Modes, ConsoleModeOffTest, testing::ValuesIn(kModes));

} // namespace
} // namespace vqrx::test
