// Attaches that fail: processes that ended or are protected, malformed arrays, WMI that fails.
#include "Scene.h"

#include "HeldProcesses.h"
#include "StandInWmi.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>

namespace vqrx::test {
namespace {

constexpr auto kServerUnavailable = static_cast<HRESULT>(0x800706BA);

ChildProcess StartChild()
{
    const ReadyEvent ready;
    ChildProcess child("\"" + TestProgram("no_windows") + "\" " + ready.Name());
    EXPECT_TRUE(ready.Wait());
    return child;
}

// Denies every right to the process, so that nobody can open it.
void DenyEverything(const ChildProcess& child)
{
    ACL nobody{};
    ASSERT_TRUE(InitializeAcl(&nobody, sizeof nobody, ACL_REVISION));
    SECURITY_DESCRIPTOR descriptor{};
    ASSERT_TRUE(InitializeSecurityDescriptor(&descriptor, SECURITY_DESCRIPTOR_REVISION));
    ASSERT_TRUE(SetSecurityDescriptorDacl(&descriptor, TRUE, &nobody, FALSE));
    ASSERT_TRUE(SetKernelObjectSecurity(child.Handle(), DACL_SECURITY_INFORMATION, &descriptor));
    const HANDLE opened = OpenProcess(PROCESS_ALL_ACCESS, FALSE, child.Pid());
    const DWORD error = GetLastError();
    ASSERT_EQ(opened, nullptr);
    ASSERT_EQ(error, static_cast<DWORD>(ERROR_ACCESS_DENIED));
}

// Makes each query to WMI fail in supervisors that start before the destructor runs.
class QueriesFail {
public:
    explicit QueriesFail(HRESULT result)
    {
        const auto value = static_cast<DWORD>(result);
        RegSetKeyValueW(HKEY_CURRENT_USER, kWmiAnswersKey, L"ExecQuery", REG_DWORD, &value,
                        sizeof value);
    }
    QueriesFail(const QueriesFail&) = delete;
    QueriesFail& operator=(const QueriesFail&) = delete;
    ~QueriesFail()
    {
        RegDeleteTreeW(HKEY_CURRENT_USER, kWmiAnswersKey);
        RegDeleteKeyW(HKEY_CURRENT_USER, L"Software\\DaemonManagerTest");
    }
};

class FailedAttachScene : public Scene {
protected:
    // Expects this id for the next request.
    void ExpectNextId(DWORD daemonId)
    {
        EXPECT_EQ(supervisor_.Client()
                      .Launch(WideText(TestProgram("no_windows")), {std::to_wstring(daemonId)})
                      .daemonId,
                  daemonId);
    }
};

TEST_F(FailedAttachScene, Attach_of_an_ended_forbidden_or_idle_process_uses_an_id_and_logs_a_line)
{
    DWORD gone = 0;
    {
        const ChildProcess child = StartChild();
        gone = child.Pid();
    }
    EXPECT_FALSE(supervisor_.Client().Attach(gone, {L"given", L"two words"}).done);
    EXPECT_TRUE(
        supervisor_.WaitForLog(1, "Unable to attach " + Described(0, gone, " given two words ")));

    // OpenProcess succeeds, because the test has a handle. WMI does not know the ended process.
    const ChildProcess ended = StartChild();
    ended.Kill();
    ASSERT_TRUE(ended.Wait());
    EXPECT_FALSE(supervisor_.Client().Attach(ended.Pid()).done);
    EXPECT_TRUE(supervisor_.WaitForLog(1, "Unable to attach " + Described(1, ended.Pid(), " ")));
    EXPECT_EQ(HandlesOf(ended.Pid()), 0U);

    const ChildProcess forbidden = StartChild();
    DenyEverything(forbidden);
    EXPECT_FALSE(supervisor_.Client().Attach(forbidden.Pid()).done);
    EXPECT_TRUE(
        supervisor_.WaitForLog(1, "Unable to attach " + Described(2, forbidden.Pid(), " ")));
    EXPECT_EQ(HandlesOf(forbidden.Pid()), 0U);
    EXPECT_TRUE(forbidden.Running());

    EXPECT_FALSE(supervisor_.Client().Attach(0).done);
    EXPECT_TRUE(supervisor_.WaitForLog(1, "Unable to attach  "));

    ExpectNextId(4);
    ASSERT_TRUE(OnePassLater(supervisor_));
    for (const RingRecord& record :
         supervisor_.Log()) { // The table has no entry for a failed attach.
        for (const char* id : {"(0)", "(1)", "(2)", "(3)"}) {
            EXPECT_FALSE(record.text.starts_with(std::string("Start DaemonId") + id)) << record;
        }
    }
}

TEST_F(FailedAttachScene, The_request_after_a_failed_attach_with_id_4_gets_id_5)
{
    for (DWORD daemonId = 0; daemonId < 4; ++daemonId) {
        ExpectNextId(daemonId);
    }
    EXPECT_FALSE(supervisor_.Client().Attach(0).done);
    ExpectNextId(5);
}

TEST_F(FailedAttachScene, Attach_refuses_an_argument_array_that_begins_at_1_and_uses_an_id)
{
    SAFEARRAYBOUND bound{1, 1};
    SAFEARRAY* shifted = SafeArrayCreate(VT_BSTR, 1, &bound);
    const ChildProcess child = StartChild();
    DWORD daemonId = 7;
    EXPECT_EQ(supervisor_.Control()->Attach(child.Pid(), &shifted, &daemonId), E_INVALIDARG);
    SafeArrayDestroy(shifted);
    EXPECT_EQ(HandlesOf(child.Pid()), 0U);
    EXPECT_EQ(supervisor_.Client().Attach(child.Pid()).daemonId, 1U);
    EXPECT_EQ(HandlesOf(child.Pid()), 1U);
    EXPECT_TRUE(supervisor_.Client().Detach(1));
}

TEST(FailedAttachSceneWithBadWmi, Attach_returns_the_result_of_a_failed_query_and_logs_no_line)
{
    const PrefixStandIns standIns(PrefixStandIns::Wmi::kStandIn);
    TestService listed("DmSceneListed");
    listed.Start();
    auto failure = std::make_unique<QueriesFail>(kServerUnavailable);
    SupervisorProcess supervisor;
    const ChildProcess child = StartChild();
    DWORD daemonId = 7;
    EXPECT_EQ(supervisor.Control()->Attach(child.Pid(), nullptr, &daemonId), kServerUnavailable);
    EXPECT_EQ(HandlesHeld(supervisor.Process().Pid(), child.Pid()), 0U);
    EXPECT_EQ(supervisor.Client().Launch(WideText(TestProgram("no_windows"))).daemonId, 1U);
    EXPECT_NE(supervisor.WaitForStart(1), 0U);
    for (const RingRecord& record : supervisor.Log()) {
        EXPECT_FALSE(record.text.starts_with("Unable to attach")) << record;
    }
    EXPECT_TRUE(child.Running());
}

TEST(FailedAttachSceneWithBadWmi, Without_WMI_every_attach_fails_and_logs_a_line)
{
    const PrefixStandIns standIns(PrefixStandIns::Wmi::kBroken);
    SupervisorProcess supervisor;
    bool logged = false;
    for (const RingRecord& record : supervisor.Log()) {
        EXPECT_NE(record.text, "Connected to WMI resource");
        logged =
            logged || (record.level == 0 && record.text.starts_with("Init WMI errror COM Error "));
    }
    EXPECT_TRUE(logged);
    const ChildProcess child = StartChild();
    for (const DWORD daemonId : {0U, 1U}) {
        EXPECT_FALSE(supervisor.Client().Attach(child.Pid(), {L"given"}).done);
        EXPECT_TRUE(supervisor.WaitForLog(1, "Unable to attach " +
                                                 Described(daemonId, child.Pid(), " given ")));
    }
    EXPECT_EQ(HandlesHeld(supervisor.Process().Pid(), child.Pid()), 0U);
    EXPECT_EQ(supervisor.Client().Launch(WideText(TestProgram("no_windows"))).daemonId, 2U);
    EXPECT_NE(supervisor.WaitForStart(2), 0U); // Launch still works.
    EXPECT_TRUE(child.Running());
}

} // namespace
} // namespace vqrx::test
