#include "CalledProgram.h"

#include "ChildProcess.h"
#include "FileContent.h"
#include "ImportPatch.h"
#include "ProcessList.h"
#include "win32/UniqueHandle.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace vqrx::test {
namespace {

using client::v0::CalledProgram;
using system::win32::v1::UniqueKernelHandle;

// Calls a program that runs until it is ended, and ends it.
// @return whether it has ended when that is done
bool IsEndedWithItsOwner()
{
    std::optional<CalledProgram> called;
    called.emplace(TestProgram("no_windows"), std::map<std::string, std::string>(), "");
    UniqueKernelHandle process;
    for (const client::v0::ImageFacts& image : client::v0::ProcessesOfImage(L"no_windows.exe")) {
        process.Reset(OpenProcess(SYNCHRONIZE | PROCESS_TERMINATE, FALSE, image.processId));
    }
    EXPECT_TRUE(called->Runs());
    called.reset();
    const bool isEnded = WaitForSingleObject(process.Get(), 0) == WAIT_OBJECT_0;
    TerminateProcess(process.Get(), 1);
    return isEnded;
}

BOOL WINAPI RefuseJob(HANDLE, HANDLE)
{
    SetLastError(ERROR_ACCESS_DENIED);
    return FALSE;
}

TEST(CalledProgram, Is_ended_with_its_owner)
{
    EXPECT_TRUE(IsEndedWithItsOwner());
}

TEST(CalledProgram, Is_ended_with_its_owner_also_if_Windows_refuses_the_job)
{
    const ImportPatch patch("AssignProcessToJobObject", RefuseJob);
    EXPECT_TRUE(IsEndedWithItsOwner());
}

BOOL(WINAPI* terminateProcess)(HANDLE, UINT);
std::thread terminating;

// Ends a process a while after the call, as Windows does.
BOOL WINAPI TerminateLater(HANDLE process, UINT code)
{
    HANDLE own = nullptr;
    DuplicateHandle(GetCurrentProcess(), process, GetCurrentProcess(), &own, 0, FALSE,
                    DUPLICATE_SAME_ACCESS);
    terminating = std::thread([own, code] {
        const UniqueKernelHandle owner(own);
        Sleep(300);
        terminateProcess(own, code);
    });
    return TRUE;
}

TEST(CalledProgram, Its_end_is_waited_for)
{
    const ImportPatch job("AssignProcessToJobObject", RefuseJob);
    std::optional<CalledProgram> called;
    called.emplace(TestProgram("no_windows"), std::map<std::string, std::string>(), "");
    const std::vector<client::v0::ImageFacts> found =
        client::v0::ProcessesOfImage(L"no_windows.exe");
    ASSERT_EQ(found.size(), 1U);
    const UniqueKernelHandle process(OpenProcess(SYNCHRONIZE, FALSE, found.front().processId));
    const ImportPatch end("TerminateProcess", TerminateLater, terminateProcess);
    called.reset();
    EXPECT_EQ(WaitForSingleObject(process.Get(), 0), WAIT_OBJECT_0);
    terminating.join();
}

// The path of a file that somebody else has made just before; it has the name of the input.
std::wstring strangersFile;
HANDLE(WINAPI* createFile)(LPCWSTR, DWORD, DWORD, LPSECURITY_ATTRIBUTES, DWORD, DWORD, HANDLE);

HANDLE WINAPI BeSlowerThanAStranger(LPCWSTR path, DWORD access, DWORD share,
                                    LPSECURITY_ATTRIBUTES attributes, DWORD disposition,
                                    DWORD flags, HANDLE model)
{
    if (strangersFile.empty()) {
        strangersFile = path;
        const UniqueKernelHandle stranger(createFile(path, GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                                                     FILE_ATTRIBUTE_NORMAL, nullptr));
        DWORD written = 0;
        EXPECT_TRUE(WriteFile(stranger.Get(), "his", 3, &written, nullptr));
    }
    return createFile(path, access, share, attributes, disposition, flags, model);
}

TEST(CalledProgram, A_file_that_somebody_else_made_for_the_input_is_not_touched)
{
    {
        strangersFile.clear();
        const ImportPatch patch("CreateFileW", BeSlowerThanAStranger, createFile);
        const CalledProgram called(TestProgram("no_windows"), {}, "input");
    }
    EXPECT_EQ(FileContent(strangersFile), "his");
    std::filesystem::remove(strangersFile);
}

} // namespace
} // namespace vqrx::test
