#include "SupervisorProgram.h"

#include "ChildProcess.h"
#include "ImportPatch.h"
#include "TempFolder.h"
#include "win32/FileTime.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>

namespace vqrx::test {
namespace {

BOOL WINAPI AreOtherUsers(PSID, PSID)
{
    return FALSE;
}

BOOL WINAPI IsNobodyKnown(PSID, WELL_KNOWN_SID_TYPE)
{
    return FALSE;
}

// A process that the guard takes for the supervisor.
struct RunningSupervisor {
    RunningSupervisor()
    {
        std::filesystem::copy_file(TestProgram("no_windows"), program);
        child = std::make_unique<ChildProcess>("\"" + program + "\"");
        found = guard::v0::FindSupervisor(program);
    }
    const TempFolder folder;
    const std::string program = folder.File("DaemonManager.exe");
    std::unique_ptr<ChildProcess> child; // ends it
    std::optional<guard::v0::SupervisorProgram> found;
};

// Everybody may run the installed program. The patches make the user of this test somebody of whom
// nothing is known.
TEST(SupervisorProgram, A_process_of_a_user_who_is_not_expected_is_not_taken_for_the_supervisor)
{
    const RunningSupervisor supervisor;
    ASSERT_TRUE(supervisor.found);
    EXPECT_EQ(supervisor.child->Pid(), supervisor.found->processId);
    const ImportPatch equal("EqualSid", AreOtherUsers);
    const ImportPatch wellKnown("IsWellKnownSid", IsNobodyKnown);
    EXPECT_FALSE(guard::v0::FindSupervisor(supervisor.program));
}

BOOL WINAPI TokenIsRefused(HANDLE, DWORD, PHANDLE)
{
    SetLastError(ERROR_ACCESS_DENIED);
    return FALSE;
}

// Whoever owns a process may let everybody open it, and nobody its token.
TEST(SupervisorProgram, A_process_that_hides_its_user_is_not_taken_for_the_supervisor)
{
    const RunningSupervisor supervisor;
    ASSERT_TRUE(supervisor.found);
    const ImportPatch token("OpenProcessToken", TokenIsRefused);
    EXPECT_FALSE(guard::v0::FindSupervisor(supervisor.program));
}

// The hand-over believes children that were created until then.
TEST(SupervisorProgram, The_end_of_a_process_is_the_time_at_which_it_ended)
{
    RunningSupervisor supervisor;
    const auto& found = supervisor.found;
    ASSERT_TRUE(found);
    const auto now = [] {
        FILETIME time{};
        GetSystemTimeAsFileTime(&time);
        return system::win32::v1::UnixMilliseconds(time);
    };
    const std::int64_t before = now();
    supervisor.child.reset();
    ASSERT_EQ(WaitForSingleObject(found->process.Get(), INFINITE), DWORD{WAIT_OBJECT_0});
    EXPECT_GE(guard::v0::EndedMs(*found), before - 1); // both times are rounded
    EXPECT_LE(guard::v0::EndedMs(*found), now() + 1);
}

} // namespace
} // namespace vqrx::test
