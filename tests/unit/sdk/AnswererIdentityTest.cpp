#include "daemon_manager/AnswererIdentity.h"

#include "ImportPatch.h"
#include "ObjectOrigin.h"
#include "StrangersObjects.h"
#include "com/ComApartment.h"
#include "win32/UniqueHandle.h"

#include <windows.h>

#include <objbase.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace vqrx::test {
namespace {

using daemon_manager::GatherEvidence;
using daemon_manager::JudgeEvidence;
using daemon_manager::JudgeIdentity;
using daemon_manager::ObjectEvidence;
using daemon_manager::SupervisorIdentity;
using daemon_manager::SupervisorProcess;
using daemon_manager::SupervisorTrust;

const std::wstring kSystemSid = L"S-1-5-18";
const std::wstring kAdministratorsSid = L"S-1-5-32-544";
const std::wstring kUserSid = L"S-1-5-21-1-2-3-1001";
const std::wstring kGuestSid = L"S-1-5-21-1-2-3-1002";

SupervisorProcess ProcessOf(const std::wstring& owner, bool expectedUser = true)
{
    SupervisorProcess process;
    process.processId = 4;
    process.program = L"C:\\FW\\DaemonManager.exe";
    process.installedProgram = true;
    process.userKnown = true;
    process.userSid = owner;
    process.ownerSid = owner;
    process.expectedUser = expectedUser;
    return process;
}

SupervisorProcess ProcessOutOfReach()
{
    SupervisorProcess process;
    process.processId = 5;
    return process;
}

SupervisorIdentity JudgedWith(const std::vector<SupervisorProcess>& processes,
                              const ObjectEvidence& evidence, const std::wstring& notedAccount = {},
                              std::uint32_t listError = 0)
{
    SupervisorIdentity identity;
    identity.installedProgram = L"C:\\FW\\DaemonManager.exe";
    identity.processes = processes;
    identity.notedAccount = notedAccount;
    identity.listError = listError;
    JudgeIdentity(identity);
    JudgeEvidence(identity, evidence);
    return identity;
}

constexpr const char* kBeginning =
    "another program has published an object under the supervisor's name: the object ";

// The mark of the objects of this process, as the supervisor makes it.
system::win32::v1::UniqueKernelHandle MarkOfThisProcess()
{
    ObjectWithout object;
    std::uint64_t exporterId = 0;
    EXPECT_EQ(S_OK, daemon_manager::ReadExporterId(&object, exporterId));
    const std::wstring name = daemon_manager::OriginMarkName(exporterId);
    SECURITY_DESCRIPTOR descriptor{};
    InitializeSecurityDescriptor(&descriptor, SECURITY_DESCRIPTOR_REVISION);
    SetSecurityDescriptorDacl(&descriptor, TRUE, nullptr, FALSE);
    SECURITY_ATTRIBUTES attributes{sizeof attributes, &descriptor, FALSE};
    return system::win32::v1::UniqueKernelHandle(
        CreateEventW(&attributes, TRUE, FALSE, name.c_str()));
}

struct AnswererIdentity : testing::Test {
    const system::com::v1::ComApartment apartment;
};

} // namespace

TEST_F(AnswererIdentity, The_mark_of_the_supervisor_shows_that_the_object_is_its_own)
{
    const SupervisorIdentity identity = JudgedWith({ProcessOf(kUserSid)}, {false, kUserSid});
    EXPECT_EQ(SupervisorTrust::kKnown, identity.trust);
    EXPECT_EQ("", identity.reason);
}

TEST_F(AnswererIdentity, The_mark_decides_if_a_stranger_runs_beside_a_process_out_of_reach)
{
    const std::vector processes = {ProcessOf(kGuestSid, false), ProcessOutOfReach()};
    for (const auto& [owner, trust] : {std::pair{kSystemSid, SupervisorTrust::kUnknown},
                                       {kAdministratorsSid, SupervisorTrust::kUnknown},
                                       {kGuestSid, SupervisorTrust::kStranger}}) {
        EXPECT_EQ(trust, JudgedWith(processes, {false, owner}).trust);
    }
}

TEST_F(AnswererIdentity, An_object_without_a_mark_is_a_strangers_also_if_the_supervisor_runs)
{
    for (const auto& processes : {std::vector{ProcessOf(kUserSid)}, {ProcessOutOfReach()}}) {
        const SupervisorIdentity identity = JudgedWith(processes, {});
        EXPECT_EQ(SupervisorTrust::kStranger, identity.trust);
        EXPECT_EQ(std::string(kBeginning) + "lacks the mark of the installed supervisor",
                  identity.reason);
    }
}

TEST_F(AnswererIdentity, The_mark_of_another_user_proves_nothing)
{
    for (const auto& processes : {std::vector{ProcessOf(kUserSid)},
                                  {ProcessOutOfReach()},
                                  {ProcessOf(kGuestSid, false), ProcessOf(kUserSid)}}) {
        const SupervisorIdentity identity = JudgedWith(processes, {false, kGuestSid});
        EXPECT_EQ(SupervisorTrust::kStranger, identity.trust);
        EXPECT_EQ(
            std::string(kBeginning) +
                "has a mark of S-1-5-21-1-2-3-1002, who does not run the installed supervisor",
            identity.reason);
    }
}

// The process has rights that a program of its user without them has not.
TEST_F(AnswererIdentity, The_owner_of_what_the_process_makes_counts_and_not_its_user)
{
    SupervisorProcess elevated = ProcessOf(kAdministratorsSid);
    elevated.userSid = kUserSid;
    EXPECT_EQ(SupervisorTrust::kKnown, JudgedWith({elevated}, {false, kAdministratorsSid}).trust);
    EXPECT_EQ(SupervisorTrust::kStranger, JudgedWith({elevated}, {false, kUserSid}).trust);
}

TEST_F(AnswererIdentity,
       Beside_a_process_that_may_not_be_examined_the_mark_must_be_of_a_trusted_owner)
{
    for (const wchar_t* const owner :
         {L"S-1-5-18", L"S-1-5-19", L"S-1-5-20", L"S-1-5-32-544", L"S-1-5-80-1-2-3-4-5"}) {
        EXPECT_EQ(SupervisorTrust::kUnknown,
                  JudgedWith({ProcessOutOfReach()}, {false, owner}).trust);
    }
    EXPECT_EQ(SupervisorTrust::kUnknown,
              JudgedWith({ProcessOutOfReach()}, {false, kUserSid}, kUserSid).trust);
    EXPECT_EQ(SupervisorTrust::kStranger,
              JudgedWith({ProcessOutOfReach()}, {false, kUserSid}, kGuestSid).trust);
}

TEST_F(AnswererIdentity, Without_the_list_of_processes_a_mark_is_enough_to_try)
{
    EXPECT_EQ(SupervisorTrust::kUnknown,
              JudgedWith({}, {false, kUserSid}, {}, ERROR_NOT_ENOUGH_MEMORY).trust);
    EXPECT_EQ(SupervisorTrust::kStranger, JudgedWith({}, {}, {}, ERROR_NOT_ENOUGH_MEMORY).trust);
}

TEST_F(AnswererIdentity, An_object_of_another_machine_is_a_strangers_whatever_its_mark)
{
    const SupervisorIdentity identity = JudgedWith({ProcessOf(kUserSid)}, {true, kUserSid});
    EXPECT_EQ(SupervisorTrust::kStranger, identity.trust);
    EXPECT_EQ(std::string(kBeginning) + "lies on another machine", identity.reason);
}

TEST_F(AnswererIdentity, What_is_known_without_the_object_stays)
{
    const SupervisorIdentity none = JudgedWith({}, {false, kSystemSid});
    EXPECT_EQ(SupervisorTrust::kStranger, none.trust);
    EXPECT_EQ(0U, none.reason.find("no process runs C:\\FW\\DaemonManager.exe"));
    SupervisorIdentity notInstalled;
    JudgeIdentity(notInstalled);
    JudgeEvidence(notInstalled, {});
    EXPECT_EQ(SupervisorTrust::kUnknown, notInstalled.trust);
}

TEST_F(AnswererIdentity, The_owner_of_the_mark_of_an_object_is_found)
{
    ObjectWithout object;
    EXPECT_EQ(L"", GatherEvidence(&object).markOwner);
    const auto mark = MarkOfThisProcess();
    ASSERT_TRUE(mark);
    const ObjectEvidence evidence = GatherEvidence(&object);
    EXPECT_EQ(0U, evidence.markOwner.find(L"S-1-5-")) << evidence.markOwner.size();
    EXPECT_FALSE(evidence.elsewhere);
}

TEST_F(AnswererIdentity, An_object_that_writes_its_marshalled_form_itself_has_no_mark)
{
    const auto mark = MarkOfThisProcess();
    Forger forger;
    EXPECT_EQ(L"", GatherEvidence(&forger).markOwner);
}

decltype(&GetProcAddress) originalGetProcAddress = nullptr;

FARPROC WINAPI FindAsOnWindows(HMODULE library, const char* name)
{
    return std::string(name) == "wine_get_version" ? nullptr
                                                   : originalGetProcAddress(library, name);
}

TEST_F(AnswererIdentity, An_object_is_elsewhere_if_COM_says_so)
{
    const ImportPatch patch("GetProcAddress", FindAsOnWindows, originalGetProcAddress);
    ProxyElsewhere proxy;
    EXPECT_TRUE(GatherEvidence(&proxy).elsewhere);
    proxy.answer = E_INVALIDARG; // a Windows that does not know the property
    EXPECT_FALSE(GatherEvidence(&proxy).elsewhere);
    proxy.answer = S_OK;
    for (const ULONG_PTR here : {SERVER_LOCALITY_PROCESS_LOCAL, SERVER_LOCALITY_MACHINE_LOCAL}) {
        proxy.locality = here;
        EXPECT_FALSE(GatherEvidence(&proxy).elsewhere);
    }
}

} // namespace vqrx::test
