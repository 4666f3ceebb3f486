// Firewall rules of daemons, and the firewall service in each of its states.
#include "Scene.h"

#include "FileContent.h"
#include "StandInFirewall.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

namespace vqrx::test {
namespace {

using Texts = std::vector<std::wstring>;

// Returns the creation time of a process in system time, units of 100 ns.
ULONGLONG CreationTime(DWORD processId)
{
    const system::win32::v1::UniqueKernelHandle process(
        OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION, FALSE, processId));
    FILETIME created{};
    FILETIME unused{};
    GetProcessTimes(process.Get(), &created, &unused, &unused, &unused);
    return (static_cast<ULONGLONG>(created.dwHighDateTime) << 32) | created.dwLowDateTime;
}

Texts Deeds()
{
    Texts texts;
    for (const FirewallDeed& deed : FirewallDeeds()) {
        texts.push_back(deed.text);
    }
    return texts;
}

class FirewallScene : public Scene {
protected:
    daemon_manager::DaemonRequest Launch(const std::wstring& argument)
    {
        return supervisor_.Client().Launch(program_, {argument});
    }

    const std::wstring program_ = WideText(TestProgram("no_windows"));
    const std::wstring rule_ = L"allowing " + program_;
};

TEST_F(FirewallScene, Launch_adds_one_rule_before_the_process_starts_and_Stop_removes_it)
{
    EXPECT_TRUE(Launch(L"a").done);
    const auto rules = StoredFirewallRules();
    ASSERT_EQ(rules.size(), 1U);
    EXPECT_EQ(rules.begin()->first, rule_);
    EXPECT_EQ(rules.begin()->second, (FirewallRule{program_, 256, 0x7FFFFFFF, 1, -1}));
    const DWORD processId = supervisor_.WaitForStart(0);
    ASSERT_EQ(Deeds(), Texts{L"add " + rule_});
    EXPECT_LE(FirewallDeeds().front().time, CreationTime(processId));

    EXPECT_FALSE(Launch(L"a").done); // A second launch adds no rule.
    KillProcess(processId);          // A restart adds no rule.
    EXPECT_NE(supervisor_.WaitForStart(0, processId), 0U);
    EXPECT_EQ(Deeds(), Texts{L"add " + rule_});

    EXPECT_TRUE(supervisor_.Client().Stop(0));
    EXPECT_TRUE(StoredFirewallRules().empty());
    EXPECT_EQ(Deeds(), (Texts{L"add " + rule_, L"remove " + rule_}));
    for (const RingRecord& record : supervisor_.Log()) { // A success logs no line.
        EXPECT_FALSE(record.text.starts_with("Firewall: ")) << record;
    }
}

TEST_F(FirewallScene, Two_daemons_of_one_program_share_a_rule_and_the_first_stop_removes_it)
{
    EXPECT_EQ(Launch(L"a").daemonId, 0U);
    EXPECT_EQ(Launch(L"b").daemonId, 1U);
    EXPECT_EQ(Deeds(), Texts{L"add " + rule_});
    const DWORD second = supervisor_.WaitForStart(1);

    EXPECT_TRUE(supervisor_.Client().Stop(0));
    EXPECT_TRUE(StoredFirewallRules().empty());
    EXPECT_TRUE(IsRunning(second)); // The process runs without its rule.
    EXPECT_TRUE(supervisor_.Client().Stop(1));
    EXPECT_TRUE(supervisor_.WaitForLog(0, "Firewall: Missing firewall rule : 0x80070002"));
    EXPECT_EQ(supervisor_.CountLog(0, "Firewall: Missing firewall rule : 0x80070002"), 1U);
}

TEST_F(FirewallScene, Stop_of_an_attached_daemon_removes_the_rule_and_leaves_the_process_running)
{
    const ReadyEvent ready;
    const ChildProcess child("\"" + TestProgram("no_windows") + "\" " + ready.Name());
    ASSERT_TRUE(ready.Wait());
    EXPECT_TRUE(supervisor_.Client().Attach(child.Pid()).done);
    EXPECT_TRUE(StoredFirewallRules().empty()); // An attach adds no rule.
    EXPECT_EQ(Launch(L"a").daemonId, 1U);
    EXPECT_EQ(StoredFirewallRules().size(), 1U);

    EXPECT_FALSE(supervisor_.Client().Stop(0));
    EXPECT_TRUE(StoredFirewallRules().empty());
    EXPECT_FALSE(supervisor_.Client().Detach(0)); // The table has no entry for it.
    EXPECT_TRUE(child.Running());
    EXPECT_EQ(HandlesOf(child.Pid()), 0U);
}

TEST_F(FirewallScene, Launch_does_not_change_an_existing_rule)
{
    const FirewallRule foreign{L"other.exe", 6, 1, 0, 0};
    StoreFirewallRule(rule_, foreign);
    EXPECT_TRUE(Launch(L"a").done);
    EXPECT_EQ(StoredFirewallRules().at(rule_), foreign);
    EXPECT_TRUE(Deeds().empty());
}

TEST_F(FirewallScene, The_rule_and_the_daemon_outlive_the_supervisor)
{
    EXPECT_TRUE(Launch(L"a").done);
    const DWORD processId = supervisor_.WaitForStart(0);
    EXPECT_EQ(supervisor_.Exit(), 0U);
    EXPECT_TRUE(IsRunning(processId));
    EXPECT_EQ(StoredFirewallRules().count(rule_), 1U);
}

// Supervisors that start with the firewall service in different states.
class FirewallServiceScene : public testing::Test {
protected:
    // Returns the lines of the log until supervision begins.
    static std::vector<std::pair<int, std::string>> StartUp(const SupervisorProcess& supervisor)
    {
        EXPECT_TRUE(supervisor.WaitForLog(2, "Deamon Thread started"));
        std::vector<std::pair<int, std::string>> lines;
        for (const RingRecord& record : supervisor.Log()) {
            lines.emplace_back(record.level, record.text);
        }
        return lines;
    }

    static void ExpectNoFirewall(SupervisorProcess& supervisor)
    {
        const std::string unavailable =
            "Firewall: Windows Firewall with Advanced Security not available !";
        EXPECT_TRUE(supervisor.Client().Launch(WideText(TestProgram("no_windows"))).done);
        EXPECT_NE(supervisor.WaitForStart(0), 0U);
        EXPECT_EQ(supervisor.CountLog(0, unavailable), 1U);
        EXPECT_TRUE(supervisor.Client().Stop(0));
        EXPECT_TRUE(supervisor.WaitForLog(0, unavailable, 2));
        EXPECT_TRUE(Deeds().empty());
    }

    const PrefixStandIns standIns_;
};

using Lines = std::vector<std::pair<int, std::string>>;

TEST_F(FirewallServiceScene, Without_the_firewall_service_daemons_run_without_rules)
{
    SupervisorProcess supervisor;
    EXPECT_EQ(StartUp(supervisor), (Lines{{0, "Firewall: Could not open service (1060)"},
                                          {2, "Connecting to WMI resource ..."},
                                          {2, "Connected to WMI resource"},
                                          {2, "Deamon Thread started"}}));
    ExpectNoFirewall(supervisor);
}

TEST_F(FirewallServiceScene, With_a_disabled_firewall_service_daemons_run_without_rules)
{
    const TestService service("MpsSvc", SERVICE_WIN32_OWN_PROCESS, SERVICE_DISABLED);
    SupervisorProcess supervisor;
    EXPECT_EQ(StartUp(supervisor), (Lines{{1, "Firewall: Service is disabled."},
                                          {2, "Connecting to WMI resource ..."},
                                          {2, "Connected to WMI resource"},
                                          {2, "Deamon Thread started"}}));
    ExpectNoFirewall(supervisor);
}

TEST_F(FirewallServiceScene,
       The_supervisor_waits_for_a_late_firewall_service_before_it_serves_clients)
{
    const ReadyEvent noticed;
    TestService service("MpsSvc", SERVICE_WIN32_OWN_PROCESS, SERVICE_DEMAND_START, 1500,
                        noticed.Name());
    service.Start(false);
    ASSERT_TRUE(service.WaitForState(SERVICE_START_PENDING));
    bool publishedEarly = false;
    std::jthread watch;
    SupervisorProcess supervisor([&](FirmwareRegistry& registry, const std::string& root) {
        SupervisorProcess::InstalledInApp(registry, root);
        watch = std::jthread([&, file = root + "\\Logs\\DaemonManager.log"] {
            const system::com::v1::ComApartment apartment;
            WaitUntil([&] { return ReadText(file).find("Waiting 1 s") != std::string::npos; });
            publishedEarly = static_cast<bool>(FindPublished());
            noticed.Signal(); // 1.5 s later the service runs.
        });
    });
    watch.join();
    EXPECT_FALSE(publishedEarly);

    const auto lines = StartUp(supervisor);
    const auto detected = std::find(
        lines.begin(), lines.end(),
        std::pair<int, std::string>(2, "Detected Windows Firewall with Advanced Security"));
    ASSERT_NE(detected, lines.end());
    int seconds = 1;
    for (auto line = lines.begin(); line != detected; line += 2, seconds *= 2) {
        EXPECT_EQ(line[0], (std::pair<int, std::string>(0, "Firewall: Current status code 2")));
        EXPECT_EQ(line[1],
                  (std::pair<int, std::string>(0, "Firewall: Waiting " + std::to_string(seconds) +
                                                      " s for the service to be running.")));
    }
    EXPECT_GE(seconds, 2);
    EXPECT_EQ(Lines(detected, lines.end()),
              (Lines{{2, "Detected Windows Firewall with Advanced Security"},
                     {2, "Connecting to WMI resource ..."},
                     {2, "Connected to WMI resource"},
                     {2, "Deamon Thread started"}}));
    EXPECT_TRUE(supervisor.Client().Launch(WideText(TestProgram("no_windows"))).done);
    EXPECT_EQ(StoredFirewallRules().size(), 1U);
}

} // namespace
} // namespace vqrx::test
