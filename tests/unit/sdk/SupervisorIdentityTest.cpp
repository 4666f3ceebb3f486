#include "daemon_manager/SupervisorIdentity.h"

#include "ChildProcess.h"
#include "ImportPatch.h"
#include "NotedAccount.h"
#include "TempFolder.h"

#include <windows.h>

#include <tlhelp32.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

namespace vqrx::test {
namespace {

using daemon_manager::IdentifySupervisor;
using daemon_manager::JudgeIdentity;
using daemon_manager::SupervisorIdentity;
using daemon_manager::SupervisorProcess;
using daemon_manager::SupervisorTrust;

const std::wstring kInstalled = L"C:\\FW\\DaemonManager.exe";

SupervisorProcess InstalledProcess(std::uint32_t processId)
{
    SupervisorProcess process;
    process.processId = processId;
    process.program = kInstalled;
    process.installedProgram = true;
    process.userKnown = true;
    process.user = L"NT AUTHORITY\\SYSTEM";
    process.expectedUser = true;
    return process;
}

SupervisorProcess OfStranger(std::uint32_t processId)
{
    SupervisorProcess process = InstalledProcess(processId);
    process.user = L"PC\\guest";
    process.expectedUser = false;
    return process;
}

SupervisorProcess OtherProgram(std::uint32_t processId)
{
    SupervisorProcess process = InstalledProcess(processId);
    process.program = L"C:\\Users\\guest\\DaemonManager.exe";
    process.installedProgram = false;
    return process;
}

SupervisorProcess Hidden(std::uint32_t processId)
{
    SupervisorProcess process;
    process.processId = processId;
    return process;
}

SupervisorIdentity Judged(std::vector<SupervisorProcess> processes,
                          const std::wstring& installed = kInstalled)
{
    SupervisorIdentity identity;
    identity.installedProgram = installed;
    identity.processes = std::move(processes);
    JudgeIdentity(identity);
    return identity;
}

HANDLE WINAPI RefuseSnapshot(DWORD, DWORD)
{
    SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return INVALID_HANDLE_VALUE;
}

BOOL WINAPI BreakOff(HANDLE, PROCESSENTRY32W*)
{
    SetLastError(ERROR_PARTIAL_COPY);
    return FALSE;
}

BOOL WINAPI AreOthers(PSID, PSID)
{
    return FALSE;
}

BOOL WINAPI IsNotWellKnown(PSID, WELL_KNOWN_SID_TYPE)
{
    return FALSE;
}

constexpr const char* kGuest = "process 7 runs C:\\FW\\DaemonManager.exe as PC\\guest, who is not "
                               "expected to run the supervisor";

} // namespace

TEST(SupervisorIdentity, The_installed_program_of_an_expected_user_is_known)
{
    const SupervisorIdentity identity = Judged({OtherProgram(3), InstalledProcess(4), Hidden(5)});
    EXPECT_EQ(SupervisorTrust::kKnown, identity.trust);
    EXPECT_EQ("", identity.reason);
}

TEST(SupervisorIdentity, The_installed_program_of_another_user_is_a_stranger)
{
    const SupervisorIdentity identity = Judged({OfStranger(7), OtherProgram(3)});
    EXPECT_EQ(SupervisorTrust::kStranger, identity.trust);
    EXPECT_EQ(kGuest, identity.reason);
}

// Otherwise a stranger who runs the installed program would turn every client away that may not
// examine the supervisor. The mark of the object decides.
TEST(SupervisorIdentity, Another_user_beside_a_hidden_process_proves_nothing)
{
    const SupervisorIdentity identity = Judged({OfStranger(7), Hidden(5)});
    EXPECT_EQ(SupervisorTrust::kUnknown, identity.trust);
    EXPECT_EQ("this user may not examine process 5, which may be the supervisor", identity.reason);
}

TEST(SupervisorIdentity, Another_user_beside_an_expected_one_is_named)
{
    const SupervisorIdentity identity = Judged({OfStranger(7), InstalledProcess(4)});
    EXPECT_EQ(SupervisorTrust::kKnown, identity.trust);
    EXPECT_EQ(kGuest, identity.reason);
}

TEST(SupervisorIdentity, Without_a_process_of_the_installed_program_a_stranger_answers)
{
    for (const auto& processes : {std::vector<SupervisorProcess>{}, {OtherProgram(3)}}) {
        const SupervisorIdentity identity = Judged(processes);
        EXPECT_EQ(SupervisorTrust::kStranger, identity.trust);
        EXPECT_EQ("no process runs C:\\FW\\DaemonManager.exe, so another program has published an "
                  "object under the supervisor's name",
                  identity.reason);
    }
}

TEST(SupervisorIdentity, A_process_that_may_not_be_examined_proves_nothing)
{
    SupervisorProcess withoutUser = InstalledProcess(5);
    withoutUser.userKnown = false;
    for (const SupervisorProcess& process : {Hidden(5), withoutUser}) {
        const SupervisorIdentity identity = Judged({process, OtherProgram(3)});
        EXPECT_EQ(SupervisorTrust::kUnknown, identity.trust);
        EXPECT_EQ("this user may not examine process 5, which may be the supervisor",
                  identity.reason);
    }
}

TEST(SupervisorIdentity, An_incomplete_list_of_processes_proves_nothing)
{
    for (const auto& [processes, trust] :
         {std::pair{std::vector<SupervisorProcess>{}, SupervisorTrust::kUnknown},
          {{OfStranger(7)}, SupervisorTrust::kUnknown},
          {{InstalledProcess(4)}, SupervisorTrust::kKnown}}) {
        SupervisorIdentity identity;
        identity.installedProgram = kInstalled;
        identity.processes = processes;
        identity.listError = ERROR_NOT_ENOUGH_MEMORY;
        JudgeIdentity(identity);
        EXPECT_EQ(trust, identity.trust);
        EXPECT_EQ(trust == SupervisorTrust::kKnown
                      ? ""
                      : "the list of processes cannot be read: Windows error 8",
                  identity.reason);
    }
}

TEST(SupervisorIdentity, An_error_of_Windows_during_the_look_at_the_processes_is_noted)
{
    {
        const ImportPatch patch("CreateToolhelp32Snapshot", RefuseSnapshot);
        EXPECT_EQ(DWORD{ERROR_NOT_ENOUGH_MEMORY}, IdentifySupervisor().listError);
    }
    for (const char* const function : {"Process32FirstW", "Process32NextW"}) {
        const ImportPatch patch(function, BreakOff);
        EXPECT_EQ(DWORD{ERROR_PARTIAL_COPY}, IdentifySupervisor().listError) << function;
    }
    EXPECT_EQ(0U, IdentifySupervisor().listError);
}

TEST(SupervisorIdentity, Without_an_installation_nothing_is_known)
{
    const SupervisorIdentity identity = Judged({InstalledProcess(4)}, L"");
    EXPECT_EQ(SupervisorTrust::kUnknown, identity.trust);
    EXPECT_EQ("nothing on this machine names the installed supervisor: DaemonMgrPS.dll is not "
              "registered beside DaemonManager.exe",
              identity.reason);
}

TEST(SupervisorIdentity, A_process_is_found_by_its_name_and_judged_by_its_file)
{
    const TempFolder folder;
    const std::string copy = folder.File("daemonmanager.EXE");
    std::filesystem::copy_file(TestProgram("no_windows"), copy);
    const ChildProcess child("\"" + copy + "\"");
    const SupervisorIdentity identity = IdentifySupervisor();
    const auto found = std::find_if(
        identity.processes.begin(), identity.processes.end(),
        [&](const SupervisorProcess& process) { return process.processId == child.Pid(); });
    ASSERT_NE(identity.processes.end(), found);
    EXPECT_EQ(std::wstring(copy.begin(), copy.end()), found->program);
    EXPECT_FALSE(found->installedProgram);
    EXPECT_TRUE(found->userKnown);
    EXPECT_TRUE(found->expectedUser); // the user of this test
    EXPECT_NE(L"", found->user);
    EXPECT_NE(0U, found->created);
}

BOOL(WINAPI* queryImageName)(HANDLE, DWORD, LPWSTR, PDWORD);

// As if the path had all the characters that a path can have.
BOOL WINAPI NeedRoomForLongestPath(HANDLE process, DWORD flags, LPWSTR path, PDWORD size)
{
    if (*size < 32768) {
        SetLastError(ERROR_INSUFFICIENT_BUFFER);
        return FALSE;
    }
    return queryImageName(process, flags, path, size);
}

TEST(SupervisorIdentity, A_process_with_a_long_path_can_be_examined)
{
    const TempFolder folder;
    const std::string copy = folder.File("DaemonManager.exe");
    std::filesystem::copy_file(TestProgram("no_windows"), copy);
    const ChildProcess child("\"" + copy + "\"");
    const ImportPatch names("QueryFullProcessImageNameW", NeedRoomForLongestPath, queryImageName);
    const SupervisorIdentity identity = IdentifySupervisor();
    EXPECT_TRUE(std::any_of(identity.processes.begin(), identity.processes.end(),
                            [&](const SupervisorProcess& process) {
                                return process.processId == child.Pid() &&
                                       process.program == std::wstring(copy.begin(), copy.end());
                            }));
}

// The two patches make this test's own user somebody of whom nothing is known.
TEST(SupervisorIdentity, An_account_is_expected_if_it_was_noted_for_the_machine)
{
    const TempFolder folder;
    const std::string copy = folder.File("DaemonManager.exe");
    std::filesystem::copy_file(TestProgram("no_windows"), copy);
    const ChildProcess child("\"" + copy + "\"");
    const ImportPatch equal("EqualSid", AreOthers);
    const ImportPatch wellKnown("IsWellKnownSid", IsNotWellKnown);
    const auto find = [&] {
        for (const SupervisorProcess& process : IdentifySupervisor().processes) {
            if (process.processId == child.Pid()) {
                return process;
            }
        }
        return SupervisorProcess{};
    };
    const SupervisorProcess unknown = find();
    EXPECT_TRUE(unknown.userKnown);
    EXPECT_FALSE(unknown.expectedUser);
    {
        const NotedAccount other(unknown.userSid + L"1");
        EXPECT_FALSE(find().expectedUser);
    }
    const NotedAccount account(unknown.userSid);
    EXPECT_TRUE(find().expectedUser);
}

} // namespace vqrx::test
