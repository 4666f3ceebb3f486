#include "ProgramBody.h"

#include "ErrorFile.h"
#include "ImportPatch.h"
#include "ProgramBodyFixture.h"
#include "PublishedObject.h"
#include "com/ComApartment.h"

#include <windows.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <thread>

namespace vqrx::test {
namespace {

using testing::HasSubstr;
using testing::Not;

TEST_F(ProgramBodyTest, Program_runs_until_Ctrl_C_and_ends_with_0)
{
    EXPECT_EQ(RunUntilPublished(), 0);
    EXPECT_TRUE(wasPublished);
    EXPECT_THAT(error.Text(), HasSubstr(" Deamon Thread started\n"));
    EXPECT_TRUE(error.Text().ends_with(" Deamon Thread is exiting...\n")) << error.Text();
    EXPECT_TRUE(std::filesystem::exists(root.Path() / "Logs" / "DaemonManager.log"));
    EXPECT_TRUE(std::filesystem::equivalent(std::filesystem::current_path(), root.Path() / "App"));
    const system::com::v1::ComApartment apartment;
    EXPECT_FALSE(FindPublished());
}

TEST_F(ProgramBodyTest, Program_can_run_twice_in_one_process)
{
    EXPECT_EQ(RunUntilPublished(), 0);
    EXPECT_EQ(RunUntilPublished(), 0);
    EXPECT_TRUE(wasPublished);
}

HRESULT WINAPI RefuseCom(void*, DWORD)
{
    return static_cast<HRESULT>(0x80010106); // RPC_E_CHANGED_MODE
}

TEST_F(ProgramBodyTest, Program_fails_if_COM_refuses)
{
    const ImportPatch patch("CoInitializeEx", RefuseCom);
    EXPECT_EQ(app::v0::RunProgram(), 1);
    EXPECT_THAT(error.Text(), testing::StartsWith("Exception occured : COM Error 80010106: "));
    EXPECT_TRUE(error.Text().ends_with("\n"));
}

BOOL WINAPI RefuseConsoleHandler(PHANDLER_ROUTINE, BOOL)
{
    return FALSE;
}

TEST_F(ProgramBodyTest, Program_fails_and_withdraws_its_object_if_the_control_handler_is_refused)
{
    const ImportPatch patch("SetConsoleCtrlHandler", RefuseConsoleHandler);
    EXPECT_EQ(app::v0::RunProgram(), 1);
    EXPECT_TRUE(error.Text().ends_with(" Deamon Thread is exiting...\n"
                                       "Exception occured : Could not set control handler\n"))
        << error.Text();
    const system::com::v1::ComApartment apartment;
    EXPECT_FALSE(FindPublished());
}

bool askedToEnd = false;

// Replaces SetConsoleCtrlHandler: at this point the object is published and the message loop has
// not begun. Posts WM_QUIT from another thread, as a client's Exit and the console handler do.
BOOL WINAPI EndBeforeTheLoop(PHANDLER_ROUTINE, BOOL)
{
    const DWORD mainThread = GetCurrentThreadId();
    std::thread([mainThread] {
        askedToEnd = PostThreadMessageA(mainThread, WM_QUIT, 0, 0) != FALSE;
    }).join();
    if (!askedToEnd) { // there was no queue: make one, so that the test fails and does not hang
        MSG message{};
        PeekMessageA(&message, nullptr, WM_USER, WM_USER, PM_NOREMOVE);
        PostThreadMessageA(mainThread, WM_QUIT, 0, 0);
    }
    return TRUE;
}

BOOL WINAPI EndTwiceBeforeTheLoop(PHANDLER_ROUTINE, BOOL)
{
    const DWORD thread = GetCurrentThreadId();
    askedToEnd = PostThreadMessageA(thread, WM_QUIT, 0, 0) != FALSE &&
                 PostThreadMessageA(thread, WM_QUIT, 0, 0) != FALSE;
    return TRUE;
}

HRESULT WINAPI RefuseObject(REFCLSID, LPUNKNOWN, DWORD, REFIID, LPVOID*)
{
    return static_cast<HRESULT>(0x80040154); // REGDB_E_CLASSNOTREG
}

TEST_F(ProgramBodyTest, Quit_message_that_comes_before_the_message_loop_ends_the_program)
{
    askedToEnd = false;
    // Without WMI, because the connection to it makes a message queue on this thread.
    const ImportPatch withoutWmi("CoCreateInstance", RefuseObject);
    const ImportPatch patch("SetConsoleCtrlHandler", EndBeforeTheLoop);
    int exitCode = 1;
    std::thread([&] { exitCode = app::v0::RunProgram(); }).join(); // a thread without a queue
    EXPECT_TRUE(askedToEnd);
    EXPECT_EQ(exitCode, 0);
}

TEST_F(ProgramBodyTest, Second_of_two_quit_messages_is_not_read)
{
    askedToEnd = false;
    const ImportPatch patch("SetConsoleCtrlHandler", EndTwiceBeforeTheLoop);
    EXPECT_EQ(app::v0::RunProgram(), 0);
    EXPECT_TRUE(askedToEnd);
    MSG message{};
    EXPECT_NE(PeekMessageA(&message, nullptr, WM_QUIT, WM_QUIT, PM_REMOVE), FALSE);
    EXPECT_EQ(PeekMessageA(&message, nullptr, WM_QUIT, WM_QUIT, PM_REMOVE), FALSE);
}

int criticalSectionsToCome = 0;

BOOL WINAPI RefuseCriticalSection(CRITICAL_SECTION* section, DWORD spinCount)
{
    if (criticalSectionsToCome-- > 0) {
        return InitializeCriticalSectionEx(section, spinCount, 0);
    }
    SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return FALSE;
}

TEST_F(ProgramBodyTest, Program_fails_with_the_unnamed_error_if_any_of_its_locks_cannot_be_made)
{
    const ImportPatch patch("InitializeCriticalSectionAndSpinCount", RefuseCriticalSection);
    std::size_t seen = 0;
    for (int count = 0; count < 9; ++count) { // locks of the sinks, the logger and the table
        criticalSectionsToCome = count;
        EXPECT_EQ(app::v0::RunProgram(), 1) << count;
        const std::string text = error.Text().substr(seen);
        EXPECT_TRUE(text.ends_with("Unknown exception occured\n")) << count << ": " << text;
        seen += text.size();
    }
}

int rootReadings = 0;
LSTATUS(WINAPI* readValue)(HKEY, LPCSTR, DWORD*, DWORD*, BYTE*, DWORD*) = nullptr;

LSTATUS WINAPI ReadOnce(HKEY key, LPCSTR name, DWORD* reserved, DWORD* type, BYTE* data,
                        DWORD* size)
{
    if (std::string(name) == "Pathname" && ++rootReadings > 1) {
        return ERROR_FILE_NOT_FOUND;
    }
    return readValue(key, name, reserved, type, data, size);
}

TEST_F(ProgramBodyTest, Program_logs_only_to_the_console_if_the_root_cannot_be_read_again)
{
    rootReadings = 0;
    readValue = RegQueryValueExA;
    const ImportPatch patch("RegQueryValueExA", ReadOnce);
    EXPECT_EQ(RunUntilPublished(), 0);
    EXPECT_EQ(rootReadings, 2);
    EXPECT_THAT(error.Text(), HasSubstr(" Deamon Thread started\n"));
    EXPECT_FALSE(std::filesystem::exists(root.Path() / "Logs"));
}

int messageErrors = 0;

BOOL WINAPI FailThenGet(MSG* message, HWND window, UINT first, UINT last)
{
    return messageErrors-- > 0 ? -1 : GetMessageW(message, window, first, last);
}

TEST_F(ProgramBodyTest, Message_loop_goes_on_after_an_error_of_GetMessage)
{
    messageErrors = 3;
    const ImportPatch patch("GetMessageA", FailThenGet);
    EXPECT_EQ(RunUntilPublished(), 0);
    EXPECT_TRUE(wasPublished);
    EXPECT_LT(messageErrors, 0);
    EXPECT_THAT(error.Text(), Not(HasSubstr("occured")));
}

UINT endedWithCode = 0;
HANDLE processEnded = nullptr;

BOOL WINAPI NoteTermination(HANDLE, UINT exitCode)
{
    endedWithCode = exitCode;
    SetEvent(processEnded);
    return TRUE;
}

bool leaving = false;
decltype(&CreateTimerQueueTimer) realTimer = nullptr;
decltype(&CoUninitialize) realLeave = nullptr;

// The limit of leaving COM, which begins now, passes at once.
BOOL WINAPI PassAtOnce(PHANDLE timer, HANDLE queue, WAITORTIMERCALLBACK callback, PVOID argument,
                       DWORD, DWORD period, ULONG flags)
{
    leaving = true;
    return realTimer(timer, queue, callback, argument, 1, period, flags);
}

// COM does not let the main thread go.
void STDMETHODCALLTYPE HoldMainThread()
{
    if (leaving) {
        WaitForSingleObject(processEnded, 60000);
    } else {
        realLeave();
    }
}

TEST_F(ProgramBodyTest, Program_that_fails_and_then_cannot_leave_COM_prints_why_and_ends_with_1)
{
    const system::win32::v1::UniqueKernelHandle event(CreateEventA(nullptr, TRUE, FALSE, nullptr));
    processEnded = event.Get();
    const ErrorFile file;
    {
        const ImportPatch handler("SetConsoleCtrlHandler", RefuseConsoleHandler);
        const ImportPatch end("TerminateProcess", NoteTermination);
        const ImportPatch timer("CreateTimerQueueTimer", PassAtOnce, realTimer);
        const ImportPatch leave("CoUninitialize", HoldMainThread, realLeave);
        EXPECT_EQ(app::v0::RunProgram(), 1);
    }
    EXPECT_EQ(endedWithCode, 1U);
    EXPECT_EQ(file.Text(), "Exception occured : Could not set control handler\r\n");
    CoUninitialize(); // the replaced call did not do it
}

} // namespace
} // namespace vqrx::test
