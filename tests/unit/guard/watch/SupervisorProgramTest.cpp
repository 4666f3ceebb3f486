#include "SupervisorProgram.h"

#include "ChildProcess.h"
#include "ImportPatch.h"
#include "TempFolder.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <filesystem>
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

// Everybody may run the installed program. The patches make the user of this test somebody of whom
// nothing is known.
TEST(SupervisorProgram, A_process_of_a_user_who_is_not_expected_is_not_taken_for_the_supervisor)
{
    const TempFolder folder;
    const std::string program = folder.File("DaemonManager.exe");
    std::filesystem::copy_file(TestProgram("no_windows"), program);
    const ChildProcess child("\"" + program + "\"");
    const auto found = guard::v0::FindSupervisor(program);
    ASSERT_TRUE(found);
    EXPECT_EQ(child.Pid(), found->processId);
    const ImportPatch equal("EqualSid", AreOtherUsers);
    const ImportPatch wellKnown("IsWellKnownSid", IsNobodyKnown);
    EXPECT_FALSE(guard::v0::FindSupervisor(program));
}

} // namespace
} // namespace vqrx::test
