#include "ProcessList.h"

#include "ChildProcess.h"
#include "ImportPatch.h"
#include "TempFolder.h"

#include <windows.h>

#include <tlhelp32.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

namespace vqrx::test {
namespace {

using namespace client::v0;

TEST(ProcessList, Version_of_a_file_comes_from_its_resource)
{
    const std::string program = ProductProgram("daemonctl.exe");
    EXPECT_EQ(VersionOfImage(std::wstring(program.begin(), program.end())), "1.0.0");
    EXPECT_EQ(VersionOfImage(L"C:\\no\\such.exe"), "");
}

// Copies a child program to a name that no other test uses: on one machine another test program may
// run the same child program at this moment.
std::string CopyOf(const std::string& name, const TempFolder& folder, const std::string& newName)
{
    std::filesystem::copy_file(TestProgram(name), folder.File(newName));
    return folder.File(newName);
}

TEST(ProcessList, Processes_of_a_file_name_are_found_whatever_the_letter_case)
{
    const TempFolder folder;
    const std::string program = CopyOf("no_windows", folder, "listed_by_name.exe");
    const ChildProcess child('"' + program + '"');
    const std::vector<ImageFacts> found = ProcessesOfImage(L"LISTED_by_name.EXE");
    ASSERT_EQ(found.size(), 1U);
    EXPECT_EQ(found[0].processId, child.Pid());
    EXPECT_EQ(found[0].path, program);
    EXPECT_TRUE(IsImageRunning(L"LISTED_by_name.EXE"));
    EXPECT_FALSE(IsImageRunning(L"listed_by_name"));
}

TEST(ProcessList, Orphan_is_a_process_whose_parent_has_ended)
{
    const TempFolder folder;
    const ChildProcess child('"' + CopyOf("no_windows", folder, "listed_child.exe") + '"');
    EXPECT_TRUE(OrphansOfImage(L"listed_child.exe").empty());
    const ReadyEvent ready;
    const ChildProcess shell("cmd.exe /d /c start /b \"\" \"" +
                             CopyOf("quits", folder, "listed_orphan.exe") + "\" " + ready.Name());
    ASSERT_TRUE(ready.Wait());
    ASSERT_TRUE(shell.Wait());
    const std::vector<std::uint32_t> orphans = OrphansOfImage(L"LISTED_orphan.exe");
    ASSERT_EQ(orphans.size(), 1U);
    KillProcess(orphans.front());
}

HANDLE WINAPI RefuseSnapshot(DWORD, DWORD)
{
    SetLastError(ERROR_ACCESS_DENIED);
    return INVALID_HANDLE_VALUE;
}

BOOL WINAPI BreakOff(HANDLE, PROCESSENTRY32W*)
{
    SetLastError(ERROR_PARTIAL_COPY);
    return FALSE;
}

TEST(ProcessList, List_that_Windows_does_not_give_is_an_error_and_no_empty_list)
{
    struct Failure {
        const char* function;
        void* replacement;
        const char* text;
    };
    for (const Failure& failure :
         {Failure{"CreateToolhelp32Snapshot", reinterpret_cast<void*>(&RefuseSnapshot),
                  "the list of processes cannot be read: Windows error 5"},
          Failure{"Process32FirstW", reinterpret_cast<void*>(&BreakOff),
                  "the list of processes cannot be read: Windows error 299"},
          Failure{"Process32NextW", reinterpret_cast<void*>(&BreakOff),
                  "the list of processes cannot be read: Windows error 299"}}) {
        const ImportPatch patch(failure.function, failure.replacement);
        try {
            static_cast<void>(ProcessesOfImage(L"no_windows.exe"));
            ADD_FAILURE() << failure.function;
        } catch (const ProcessListUnreadable& error) {
            EXPECT_STREQ(error.what(), failure.text) << failure.function;
        }
        EXPECT_THROW(static_cast<void>(ChildrenOfProcess(GetCurrentProcessId())),
                     ProcessListUnreadable);
    }
}

} // namespace
} // namespace vqrx::test
