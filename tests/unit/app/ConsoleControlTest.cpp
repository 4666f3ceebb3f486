#include "ConsoleControl.h"

#include "ImportPatch.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <stdexcept>
#include <thread>

namespace vqrx::test {
namespace {

using app::v0::ConsoleCtrlHandler;

/// Removes one WM_QUIT from the queue of the calling thread. @return whether there was one
bool TakeQuit()
{
    MSG message{};
    return PeekMessageA(&message, nullptr, WM_QUIT, WM_QUIT, PM_REMOVE) != FALSE;
}

BOOL HandleOnAnotherThread(DWORD event)
{
    BOOL handled = FALSE;
    std::thread([&] { handled = ConsoleCtrlHandler(event); }).join();
    return handled;
}

TEST(ConsoleControlTest, Each_of_the_four_events_that_end_a_program_posts_one_WM_QUIT)
{
    TakeQuit(); // also makes the message queue
    for (const DWORD event :
         {CTRL_C_EVENT, CTRL_BREAK_EVENT, CTRL_CLOSE_EVENT, CTRL_SHUTDOWN_EVENT}) {
        EXPECT_EQ(HandleOnAnotherThread(event), TRUE) << event;
        EXPECT_TRUE(TakeQuit()) << event;
        EXPECT_FALSE(TakeQuit()) << event;
    }
}

TEST(ConsoleControlTest, Every_other_event_is_left_to_the_next_handler)
{
    TakeQuit();
    for (const DWORD event : {3UL, 4UL, 5UL, 7UL, 31UL, 32UL, 33UL, 63UL, 64UL, 65UL, 66UL, 70UL,
                              0x80000000UL, 0xFFFFFFFFUL}) {
        EXPECT_EQ(HandleOnAnotherThread(event), FALSE) << event;
        EXPECT_FALSE(TakeQuit()) << event;
    }
}

BOOL WINAPI RefuseHandler(PHANDLER_ROUTINE, BOOL)
{
    SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return FALSE;
}

TEST(ConsoleControlTest, Install_throws_if_Windows_refuses_the_handler)
{
    const ImportPatch patch("SetConsoleCtrlHandler", RefuseHandler);
    try {
        app::v0::InstallConsoleCtrlHandler();
        FAIL();
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(), "Could not set control handler");
    }
}

} // namespace
} // namespace vqrx::test
