#include "DoctorChecks.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace vqrx::test {
namespace {

using namespace client::v0;

DoctorFacts FactsOfHealthyMachine()
{
    DoctorFacts facts;
    facts.version = "1.0.0";
    InstallationFacts& installation = facts.installation;
    installation.administrator = true;
    installation.currentKey = {R"(HKLM\SOFTWARE\UnitWarden\CurrentVersion)", 0, 0, R"(C:\FW\App)"};
    installation.olderKey = {R"(HKLM\SOFTWARE\VANTORO_QRX\CurrentVersion)", 2, 0, ""};
    installation.root = R"(C:\FW)";
    installation.app = {R"(C:\FW\App)", 0, true};
    installation.logs = {R"(C:\FW\Logs)", 0, true};
    installation.logFile = R"(C:\FW\Logs\DaemonManager.log)";
    installation.freeBytes = 0x200000;
    facts.proxy.library = {0, R"(C:\FW\App\DaemonMgrPS.dll)", "1.0.0"};
    facts.proxy.libraryThere = true;
    facts.supervisor.answer = SupervisorFacts::Answer::kAnswers;
    facts.supervisor.processes = {{12, R"(C:\FW\App\DaemonManager.exe)", "1.0.0"}};
    facts.firewallService.name = "MpsSvc";
    facts.firewallService.startType = 2;
    facts.firewallService.state = 4;
    facts.wmi.answered = true;
    facts.wmi.knowsThisProcess = true;
    facts.wmi.executablePathFits = true;
    facts.comSecurity.known = true;
    facts.crashDialogs.dialogsOff = true;
    facts.crashDialogs.errorMode = 2;
    return facts;
}

TEST(DoctorChecks, On_a_healthy_machine_every_check_is_ok_and_the_order_is_fixed)
{
    const std::vector<Finding> findings = Judge(FactsOfHealthyMachine());
    std::vector<std::string> checks;
    for (const Finding& finding : findings) {
        EXPECT_EQ(finding.verdict, Verdict::kOk) << finding.check << ": " << finding.text;
        EXPECT_EQ(finding.remedy, "") << finding.check;
        checks.push_back(finding.check);
    }
    EXPECT_EQ(checks, (std::vector<std::string>{"rights", "registry", "app-folder", "log-folder",
                                                "proxy", "proxy-users", "file-rights", "key-rights",
                                                "firewall-service", "supervisor", "com-security",
                                                "wmi", "crash-dialogs", "error-boxes", "daemons",
                                                "firewall-rules", "autostart"}));
    EXPECT_EQ(ExitCodeOf(findings), 0);
}

TEST(DoctorChecks, Guard_that_starts_at_a_logon_adds_the_check_of_its_session)
{
    DoctorFacts facts = FactsOfHealthyMachine();
    facts.autostart.entries = {{GuardMode::kSession, "no guard", true, false}};
    const std::vector<Finding> findings = Judge(facts);
    EXPECT_EQ(findings.back().check, "session");
    EXPECT_EQ(findings.back().verdict, Verdict::kWarning);
}

TEST(DoctorChecks, Exit_code_is_that_of_the_worst_finding)
{
    const Finding warning{"wmi", Verdict::kWarning, "", ""};
    const Finding failure{"wmi", Verdict::kFailure, "", ""};
    EXPECT_EQ(ExitCodeOf({}), 0);
    EXPECT_EQ(ExitCodeOf({warning}), 1);
    EXPECT_EQ(ExitCodeOf({warning, {"supervisor", Verdict::kFailure, "", ""}}), 3);
    EXPECT_EQ(ExitCodeOf({{"proxy", Verdict::kFailure, "", ""}, warning}), 3);
    EXPECT_EQ(ExitCodeOf({{"proxy", Verdict::kFailure, "", ""}, failure}), 4);
}

} // namespace
} // namespace vqrx::test
