#include "CalledProgram.h"

#include "ChildProcess.h"
#include "ImportPatch.h"
#include "ProcessList.h"
#include "win32/UniqueHandle.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <map>
#include <optional>
#include <string>

namespace vqrx::test {
namespace {

using client::v0::CalledProgram;
using system::win32::v1::UniqueKernelHandle;

// Calls a program that runs until it is ended, and ends it.
// @return whether it has ended within a minute
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
    const bool isEnded = WaitForSingleObject(process.Get(), 60000) == WAIT_OBJECT_0;
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

} // namespace
} // namespace vqrx::test
