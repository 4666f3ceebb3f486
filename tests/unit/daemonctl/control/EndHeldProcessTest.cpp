#include "EndHeldProcess.h"

#include "ChildProcess.h"
#include "ImportPatch.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace vqrx::test {
namespace {

using namespace client::v0;

class EndHeldProcessTest : public ::testing::Test {
protected:
    // Ends a process. Returns "gone: TEXT" or "runs: TEXT".
    std::string End(DWORD processId)
    {
        const HeldProcess held(processId);
        const EndedResult result = EndHeldProcess(held, "the child", reporter_);
        return (result.isGone ? "gone: " : "runs: ") + result.text;
    }

    std::vector<std::string> waits_;
    const Reporter reporter_{{}, [this](const std::string& line) { waits_.push_back(line); }, {}};
};

HANDLE WINAPI RefuseToOpen(DWORD, BOOL, DWORD)
{
    SetLastError(ERROR_ACCESS_DENIED);
    return nullptr;
}

BOOL WINAPI RefuseToEnd(HANDLE, UINT)
{
    SetLastError(ERROR_GEN_FAILURE);
    return FALSE;
}

decltype(TerminateProcess)* terminateProcess = nullptr;

// The process ends before it is terminated. Windows then refuses the termination.
BOOL WINAPI EndBeforeTermination(HANDLE process, UINT)
{
    terminateProcess(process, 7);
    WaitForSingleObject(process, INFINITE);
    SetLastError(ERROR_ACCESS_DENIED);
    return FALSE;
}

TEST_F(EndHeldProcessTest, Process_without_a_window_is_terminated_without_a_wait)
{
    const ChildProcess child('"' + TestProgram("no_windows") + '"');
    EXPECT_EQ(End(child.Pid()), "gone: terminated");
    EXPECT_FALSE(child.Running());
    EXPECT_EQ(child.ExitCode(), 0U);
    EXPECT_TRUE(waits_.empty());
}

TEST_F(EndHeldProcessTest, Process_with_a_window_is_asked_to_quit_and_the_wait_is_announced)
{
    const ReadyEvent ready;
    const ChildProcess child('"' + TestProgram("quits") + "\" " + ready.Name());
    ASSERT_TRUE(ready.Wait());
    EXPECT_EQ(End(child.Pid()), "gone: ended after the quit message");
    EXPECT_EQ(waits_, std::vector<std::string>{"waiting at most 30 s until the child has ended"});
}

TEST_F(EndHeldProcessTest, Agent_gets_keystrokes_and_a_longer_wait_is_announced)
{
    const ReadyEvent ready;
    const ChildProcess child('"' + TestProgram("kxsnmp_agent") + "\" " + ready.Name());
    ASSERT_TRUE(ready.Wait());
    EXPECT_EQ(End(child.Pid()), "gone: closed its windows after the keystrokes");
    EXPECT_EQ(waits_, std::vector<std::string>{"waiting at most 62 s until the child has ended"});
}

TEST_F(EndHeldProcessTest, Process_that_may_not_be_opened_runs_on_and_the_reason_is_reported)
{
    const ChildProcess child('"' + TestProgram("no_windows") + '"');
    const HeldProcess held(child.Pid());
    const ImportPatch patch("OpenProcess", RefuseToOpen);
    const EndedResult result = EndHeldProcess(held, "the child", reporter_);
    EXPECT_FALSE(result.isGone);
    EXPECT_EQ(result.text,
              "cannot be ended: error 5, access denied: run this command as administrator");
    EXPECT_TRUE(child.Running());
}

TEST_F(EndHeldProcessTest, Refused_termination_is_reported)
{
    const ChildProcess child('"' + TestProgram("no_windows") + '"');
    std::string text;
    {
        const ImportPatch patch("TerminateProcess", RefuseToEnd);
        text = End(child.Pid());
    }
    EXPECT_EQ(text, "runs: cannot be ended: error 31");
    EXPECT_TRUE(child.Running());
}

TEST_F(EndHeldProcessTest, Process_that_ends_by_itself_meanwhile_counts_as_ended)
{
    const ChildProcess child('"' + TestProgram("no_windows") + '"');
    {
        const ImportPatch patch("TerminateProcess", EndBeforeTermination, terminateProcess);
        EXPECT_EQ(End(child.Pid()), "gone: had ended already");
    }
    EXPECT_EQ(child.ExitCode(), 7U);
}

TEST_F(EndHeldProcessTest, Process_whose_id_is_free_counts_as_ended)
{
    EXPECT_EQ(End(0x7FFFFFFC), "gone: had ended already");
}

} // namespace
} // namespace vqrx::test
