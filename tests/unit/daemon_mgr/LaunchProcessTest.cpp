#include "LaunchProcess.h"

#include "ChildProcess.h"
#include "FileContent.h"
#include "ImportPatch.h"
#include "TempFolder.h"

#include <gtest/gtest.h>

namespace vqrx::test {
namespace {

using system::daemon::daemon_mgr::v0::LaunchProcess;
using system::win32::v1::UniqueKernelHandle;

struct Creation {
    std::string application;
    std::string commandLine;
    DWORD flags = 0;
    BOOL inherit = TRUE;
    bool defaults = false;
    DWORD startupSize = 0;
    DWORD errorMode = 0; // of the thread
    UINT processErrorMode = 0;
} seen;

BOOL WINAPI RefuseToCreate(LPCSTR application, LPSTR commandLine, LPSECURITY_ATTRIBUTES process,
                           LPSECURITY_ATTRIBUTES thread, BOOL inherit, DWORD flags,
                           LPVOID environment, LPCSTR folder, LPSTARTUPINFOA startup,
                           LPPROCESS_INFORMATION)
{
    seen.application = application;
    seen.commandLine = commandLine;
    seen.flags = flags;
    seen.inherit = inherit;
    seen.defaults =
        process == nullptr && thread == nullptr && environment == nullptr && folder == nullptr;
    seen.startupSize = startup->cb;
    seen.errorMode = GetThreadErrorMode();
    seen.processErrorMode = GetErrorMode();
    SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return FALSE;
}

std::string WaitForFile(const std::string& name)
{
    std::string text;
    for (int tries = 0; tries < 6000 && text.empty(); ++tries) {
        Sleep(10); // the file is renamed when complete, and can be opened a moment later
        text = FileContentIfAny(name);
    }
    return text;
}

} // namespace

// Nobody would close a message box on the appliance. The launch would wait for it, and so would
// every client.
TEST(LaunchProcessTest,
     Critical_errors_fail_without_a_message_box_and_the_child_inherits_no_error_mode)
{
    const DWORD before = GetThreadErrorMode();
    ASSERT_EQ(0U, before & SEM_FAILCRITICALERRORS);
    const UINT ofProcess = GetErrorMode();
    const ImportPatch patch("CreateProcessA", RefuseToCreate);
    EXPECT_FALSE(LaunchProcess("A:\\a.exe", {}));
    EXPECT_EQ(before | SEM_FAILCRITICALERRORS, seen.errorMode);
    EXPECT_EQ(ofProcess, seen.processErrorMode);
    EXPECT_EQ(before, GetThreadErrorMode());
    EXPECT_EQ(ofProcess, GetErrorMode());
}

TEST(LaunchProcessTest, CreateProcess_gets_a_new_console_and_defaults_for_the_rest)
{
    const ImportPatch patch("CreateProcessA", RefuseToCreate);
    EXPECT_FALSE(LaunchProcess("C:\\Program Files\\a.exe", {"-x", "two words"}));
    EXPECT_EQ("C:\\Program Files\\a.exe", seen.application);
    EXPECT_EQ("\"C:\\Program Files\\a.exe\" -x \"two words\" ", seen.commandLine);
    EXPECT_EQ(0x10U, seen.flags);
    EXPECT_FALSE(seen.inherit);
    EXPECT_TRUE(seen.defaults);
    EXPECT_EQ(104U, seen.startupSize);
}

TEST(LaunchProcessTest, Launch_of_a_missing_program_gives_no_handle)
{
    EXPECT_FALSE(LaunchProcess("C:\\no such program.exe", {}));
}

TEST(LaunchProcessTest, Program_receives_the_command_line_unchanged)
{
    const TempFolder folder;
    const std::string copy = folder.File("with blanks \xE9.exe");
    ASSERT_TRUE(CopyFileA(TestProgram("writes_command_line").c_str(), copy.c_str(), TRUE));
    const std::string out = folder.File("out.txt");
    const UniqueKernelHandle process = LaunchProcess(copy, {out, "say\"hi\"", "\xE9t\xE9", "a b"});
    ASSERT_TRUE(process);
    const std::string written = WaitForFile(out);
    KillProcess(GetProcessId(process.Get()));

    const std::string ansi = "\"" + copy + "\" " + out + " say\"hi\" \xE9t\xE9 \"a b\" ";
    std::wstring wide(ansi.size(), L'\0');
    MultiByteToWideChar(CP_ACP, 0, ansi.data(), static_cast<int>(ansi.size()), wide.data(),
                        static_cast<int>(wide.size()));
    std::string expected(ansi.size() * 3, '\0');
    expected.resize(static_cast<std::size_t>(
        WideCharToMultiByte(CP_UTF8, 0, wide.data(), static_cast<int>(wide.size()), expected.data(),
                            static_cast<int>(expected.size()), nullptr, nullptr)));
    EXPECT_EQ(expected, written);
}

TEST(LaunchProcessTest, Program_runs_in_the_working_folder_of_the_supervisor)
{
    const TempFolder folder;
    const std::string out = "relative.txt";
    char before[MAX_PATH] = {};
    GetCurrentDirectoryA(MAX_PATH, before);
    ASSERT_TRUE(SetCurrentDirectoryA(folder.Path().string().c_str()));
    const UniqueKernelHandle process = LaunchProcess(TestProgram("writes_command_line"), {out});
    SetCurrentDirectoryA(before);
    ASSERT_TRUE(process);
    EXPECT_NE("", WaitForFile(folder.File(out)));
    KillProcess(GetProcessId(process.Get()));
}

} // namespace vqrx::test
