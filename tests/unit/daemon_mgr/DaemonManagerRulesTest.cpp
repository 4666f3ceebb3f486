// The firewall rules of the daemons, from Launch to Stop.
#include "AllocationFault.h"
#include "ManagerFixture.h"
#include "StandInFirewall.h"
#include "StandInWmi.h"
#include "TestService.h"

#include <gtest/gtest.h>

#include <string>

namespace vqrx::test {
namespace {

// The firewall service runs.
class DaemonManagerRulesTest : public ManagerFixture {
protected:
    DaemonManagerRulesTest() { service_.Start(); }

    static std::size_t RulesFor(const std::string& path)
    {
        const std::string name = "allowing " + path;
        return StoredFirewallRules().count(std::wstring(name.begin(), name.end()));
    }

    TestService service_{"MpsSvc"};
    StandInFirewall firewall_;
    StandInWmi wmi_; // answers from the live system
};

class DaemonManagerDisabledFirewallTest : public ManagerFixture {
protected:
    TestService service_{"MpsSvc", SERVICE_WIN32_OWN_PROCESS, SERVICE_DISABLED};
    StandInFirewall firewall_;
};

} // namespace

TEST_F(DaemonManagerRulesTest, Launch_makes_the_rule_of_a_program_once_and_before_its_process)
{
    Make(kNoPasses);
    DWORD daemonId = 9;
    EXPECT_EQ(S_OK, Launch("C:\\a.exe", {}, &daemonId));
    EXPECT_EQ(1U, RulesFor("C:\\a.exe"));
    EXPECT_EQ(S_FALSE, Launch("C:\\a.exe", {}, &daemonId));
    EXPECT_EQ(S_OK, Launch("C:\\a.exe", {"x"}, &daemonId));
    EXPECT_EQ(1, TheFirewallScript().adds);
}

TEST_F(DaemonManagerRulesTest, First_Stop_of_two_daemons_of_one_program_removes_their_rule)
{
    Make(kNoPasses);
    DWORD first = 9;
    DWORD second = 9;
    Launch("C:\\a.exe", {"x"}, &first);
    Launch("C:\\a.exe", {"y"}, &second);
    EXPECT_EQ(S_OK, manager_->Stop(first));
    EXPECT_EQ(0U, RulesFor("C:\\a.exe"));
    EXPECT_EQ(S_OK, manager_->Stop(second));
    sink_.WaitForPrefix("Firewall: Missing");
    EXPECT_EQ(1U, sink_.Count(0, "Firewall: Missing firewall rule : 0x80070002"));
}

TEST_F(DaemonManagerRulesTest,
       Stop_of_an_attached_daemon_removes_the_rule_and_leaves_the_process_running)
{
    const ReadyEvent ready;
    const ChildProcess child("\"" + TestProgram("no_windows") + "\" " + ready.Name());
    ASSERT_TRUE(ready.Wait());
    Make(kNoPasses);
    DWORD launched = 9;
    DWORD attached = 9;
    Launch(TestProgram("no_windows"), {}, &launched); // makes the rule
    ASSERT_EQ(S_OK, manager_->Attach(child.Pid(), nullptr, &attached));
    ASSERT_EQ(1U, RulesFor(TestProgram("no_windows")));
    EXPECT_EQ(S_FALSE, manager_->Stop(attached));
    EXPECT_EQ(0U, RulesFor(TestProgram("no_windows")));
    EXPECT_EQ(S_FALSE, manager_->Detach(attached)); // the daemon is no longer in the table
    EXPECT_TRUE(child.Running());
}

TEST_F(DaemonManagerRulesTest, Attach_makes_no_rule)
{
    const ReadyEvent ready;
    const ChildProcess child("\"" + TestProgram("no_windows") + "\" " + ready.Name());
    ASSERT_TRUE(ready.Wait());
    Make(kNoPasses);
    DWORD daemonId = 9;
    ASSERT_EQ(S_OK, manager_->Attach(child.Pid(), nullptr, &daemonId));
    EXPECT_TRUE(StoredFirewallRules().empty());
}

TEST_F(DaemonManagerRulesTest, Stop_that_runs_out_of_memory_keeps_the_rule)
{
    Make();
    bool happened = true;
    for (std::size_t succeeding = 0; happened; ++succeeding) {
        const ReadyEvent ready;
        DWORD processId = 0;
        const DWORD daemonId = LaunchAndWait("no_windows", ready, processId);
        HRESULT hr = S_OK;
        {
            const AllocationFault fault(succeeding);
            hr = manager_->Stop(daemonId);
            happened = fault.Happened();
        }
        EXPECT_EQ(hr == S_OK ? 0U : 1U, RulesFor(TestProgram("no_windows"))) << succeeding;
        EXPECT_EQ(hr == S_OK ? S_FALSE : S_OK, manager_->Stop(daemonId)) << succeeding;
        ASSERT_GT(100U, succeeding);
    }
}

TEST_F(DaemonManagerDisabledFirewallTest,
       Launch_and_Stop_log_that_the_firewall_is_not_available_and_succeed)
{
    Make(kNoPasses);
    EXPECT_TRUE(sink_.WaitForText("Firewall: Service is disabled."));
    DWORD daemonId = 9;
    EXPECT_EQ(S_OK, Launch("C:\\a.exe", {}, &daemonId));
    EXPECT_EQ(S_OK, manager_->Stop(daemonId));
    EXPECT_EQ(0, TheFirewallScript().adds);
    sink_.WaitForPrefix("Firewall: Windows Firewall with", 2);
    EXPECT_EQ(2U,
              sink_.Count(0, "Firewall: Windows Firewall with Advanced Security not available !"));
}

} // namespace vqrx::test
