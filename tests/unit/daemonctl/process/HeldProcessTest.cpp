#include "HeldProcess.h"

#include "ChildProcess.h"
#include "ImportPatch.h"
#include "TimeText.h"

#include <windows.h>

#include <gtest/gtest.h>

namespace vqrx::test {
namespace {

using namespace client::v0;

TEST(HeldProcess, Facts_are_those_of_the_opened_process_until_it_ends)
{
    const ChildProcess child('"' + TestProgram("no_windows") + '"');
    const HeldProcess held(child.Pid());
    const ProcessFacts facts = held.Facts();
    EXPECT_EQ(facts.state, ProcessFacts::State::kRunning);
    EXPECT_EQ(facts.processId, child.Pid());
    EXPECT_EQ(facts.image, TestProgram("no_windows"));
    EXPECT_EQ(facts.createdMs, ReadProcessFacts(child.Pid()).createdMs);
    child.Kill();
    ASSERT_TRUE(child.Wait());
    EXPECT_EQ(held.Facts().state, ProcessFacts::State::kGone);
    ASSERT_TRUE(held.Facts().endedMs);
    EXPECT_GE(*held.Facts().endedMs, facts.createdMs);
    EXPECT_LE(*held.Facts().endedMs, NowMs());
    EXPECT_FALSE(facts.endedMs);
    EXPECT_EQ(HeldProcess(4294967280U).Facts().state, ProcessFacts::State::kGone);
}

DWORD askedRights = 0;

HANDLE WINAPI DenyAccess(DWORD access, BOOL inherit, DWORD)
{
    askedRights = access;
    EXPECT_FALSE(inherit);
    SetLastError(ERROR_ACCESS_DENIED);
    return nullptr;
}

TEST(HeldProcess, Process_that_refuses_two_modest_rights_is_hidden)
{
    const ImportPatch patch("OpenProcess", DenyAccess);
    EXPECT_EQ(HeldProcess(GetCurrentProcessId()).Facts().state, ProcessFacts::State::kHidden);
    EXPECT_EQ(askedRights, 0x101000U); // SYNCHRONIZE and PROCESS_QUERY_LIMITED_INFORMATION
}

HANDLE WINAPI LackMemory(DWORD, BOOL, DWORD)
{
    SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return nullptr;
}

TEST(HeldProcess, Process_counts_as_gone_only_if_Windows_knows_no_such_process)
{
    const ImportPatch patch("OpenProcess", LackMemory);
    EXPECT_EQ(HeldProcess(GetCurrentProcessId()).Facts().state, ProcessFacts::State::kHidden);
}

} // namespace
} // namespace vqrx::test
