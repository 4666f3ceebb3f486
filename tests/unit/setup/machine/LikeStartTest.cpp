#include "LikeStart.h"

#include "ChildProcess.h"
#include "ImportPatch.h"
#include "LimitedProcess.h"
#include "SetupError.h"
#include "win32/UniqueHandle.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <string>

namespace vqrx::test {
namespace {

using setup::v0::FormerProcess;
using setup::v0::RightsOfProcess;
using setup::v0::SetupError;
using setup::v0::StartLike;
using setup::v0::TestStartLike;
using system::win32::v1::UniqueKernelHandle;

int processesStarted = 0;

// Starts with the full rights of this process whatever token is given.
BOOL WINAPI IgnoreToken(HANDLE, LPCWSTR program, LPWSTR command, LPSECURITY_ATTRIBUTES,
                        LPSECURITY_ATTRIBUTES, BOOL, DWORD flags, LPVOID, LPCWSTR folder,
                        LPSTARTUPINFOW startup, LPPROCESS_INFORMATION started)
{
    ++processesStarted;
    EXPECT_NE(0U, flags & CREATE_SUSPENDED);
    return CreateProcessW(program, command, nullptr, nullptr, FALSE,
                          flags & ~DWORD{CREATE_UNICODE_ENVIRONMENT}, nullptr, folder, startup,
                          started);
}

BOOL WINAPI RefuseAsUser(HANDLE, LPCWSTR, LPWSTR, LPSECURITY_ATTRIBUTES, LPSECURITY_ATTRIBUTES,
                         BOOL, DWORD, LPVOID, LPCWSTR, LPSTARTUPINFOW, LPPROCESS_INFORMATION)
{
    SetLastError(ERROR_PRIVILEGE_NOT_HELD);
    return FALSE;
}

BOOL WINAPI RefuseWithToken(HANDLE, DWORD, LPCWSTR, LPWSTR, DWORD, LPVOID, LPCWSTR, LPSTARTUPINFOW,
                            LPPROCESS_INFORMATION)
{
    SetLastError(ERROR_ACCESS_DENIED);
    return FALSE;
}

std::string ReasonNotToStart(const FormerProcess& former)
{
    try {
        const UniqueKernelHandle process = StartLike(former, TestProgram("exits_with"));
        TerminateProcess(process.Get(), 1);
    } catch (const SetupError& error) {
        return error.what();
    }
    return "started";
}

TEST(LikeStart, A_process_with_the_rights_of_this_one_gets_them_again)
{
    const ChildProcess child("\"" + TestProgram("no_windows") + "\"");
    const FormerProcess former(child.Pid(), TestProgram("no_windows"));
    EXPECT_TRUE(RightsOfProcess(GetCurrentProcess()) == former.Rights());
    const UniqueKernelHandle process = StartLike(former, TestProgram("no_windows"));
    EXPECT_TRUE(former.Rights() == RightsOfProcess(process.Get()));
    EXPECT_EQ(DWORD{WAIT_TIMEOUT}, WaitForSingleObject(process.Get(), 0));
    TerminateProcess(process.Get(), 1);
}

TEST(LikeStart, A_process_with_lesser_rights_does_not_get_more)
{
    const LimitedProcess limited;
    const FormerProcess former(limited.Id(), TestProgram("no_windows"));
    EXPECT_FALSE(former.Rights().administrator);
    const UniqueKernelHandle process = StartLike(former, TestProgram("no_windows"));
    EXPECT_TRUE(former.Rights() == RightsOfProcess(process.Get()));
    TerminateProcess(process.Get(), 1);
}

TEST(LikeStart, A_process_that_got_other_rights_never_runs)
{
    const LimitedProcess limited;
    const FormerProcess former(limited.Id(), TestProgram("no_windows"));
    const ImportPatch patch("CreateProcessAsUserW", IgnoreToken);
    processesStarted = 0;
    EXPECT_NE(ReasonNotToStart(former).find("Windows gave a new process the rights of"),
              std::string::npos);
    EXPECT_EQ(1, processesStarted);
}

TEST(LikeStart, Nothing_is_started_if_Windows_refuses_the_rights)
{
    const LimitedProcess limited;
    const FormerProcess former(limited.Id(), TestProgram("no_windows"));
    const ImportPatch asUser("CreateProcessAsUserW", RefuseAsUser);
    const ImportPatch withToken("CreateProcessWithTokenW", RefuseWithToken);
    const std::string reason = ReasonNotToStart(former);
    EXPECT_NE(reason.find("Windows does not start a program with the account and the rights that "
                          "no_windows.exe had, "),
              std::string::npos)
        << reason;
    EXPECT_NE(reason.find("(Windows error 5)"), std::string::npos) << reason;
    EXPECT_THROW(TestStartLike(former, TestProgram("no_windows")), SetupError);
}

TEST(LikeStart, Nothing_is_started_like_a_process_whose_rights_are_not_known)
{
    const FormerProcess nobody(0, "");
    EXPECT_TRUE(nobody.WaitForEnd(0));
    EXPECT_NE(ReasonNotToStart(nobody).find("did not show the account"), std::string::npos);
}

HANDLE WINAPI RefuseToOpen(DWORD, BOOL, DWORD)
{
    SetLastError(ERROR_ACCESS_DENIED);
    return nullptr;
}

BOOL WINAPI TellNoTimes(HANDLE, LPFILETIME, LPFILETIME, LPFILETIME, LPFILETIME)
{
    return FALSE;
}

TEST(FormerProcess, Counts_as_ended_only_if_Windows_says_so)
{
    const ChildProcess child("\"" + TestProgram("no_windows") + "\"");
    {
        const ImportPatch hidden("OpenProcess", RefuseToOpen);
        EXPECT_FALSE(FormerProcess(child.Pid(), "").WaitForEnd(0));
    }
    const ImportPatch timeless("GetProcessTimes", TellNoTimes);
    const FormerProcess former(child.Pid(), "", 1);
    EXPECT_FALSE(former.WaitForEnd(0));
    child.Kill();
    EXPECT_TRUE(former.WaitForEnd(60000));
}

TEST(LikeStart, A_test_of_the_rights_lets_the_program_not_run)
{
    const ReadyEvent event;
    const ChildProcess child("\"" + TestProgram("no_windows") + "\"");
    const FormerProcess former(child.Pid(), TestProgram("no_windows"));
    EXPECT_NO_THROW(TestStartLike(former, TestProgram("no_windows")));
    EXPECT_FALSE(former.WaitForEnd(0));
    child.Kill();
    EXPECT_TRUE(former.WaitForEnd(60000));
}

} // namespace
} // namespace vqrx::test
