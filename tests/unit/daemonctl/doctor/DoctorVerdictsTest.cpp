#include "DoctorVerdicts.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace vqrx::test {
namespace {

using namespace client::v0;

constexpr const char* kCurrentKey = R"(HKLM\SOFTWARE\UnitWarden\CurrentVersion)";
constexpr const char* kOlderKey = R"(HKLM\SOFTWARE\VANTORO_QRX\CurrentVersion)";
constexpr const char* kRootUnknown =
    "the folder is not known, because the registry does not name the firmware root";
constexpr long kDenied = static_cast<long>(0x80070005U - 0x100000000LL);

// A machine on which all is well.
DoctorFacts Healthy()
{
    DoctorFacts facts;
    facts.version = "1.0.0";
    InstallationFacts& installation = facts.installation;
    installation.administrator = true;
    installation.currentKey = {kCurrentKey, 0, 0, R"(C:\FW\App)"};
    installation.olderKey = {kOlderKey, 2, 0, ""};
    installation.root = R"(C:\FW)";
    installation.app = {R"(C:\FW\App)", 0, true};
    installation.logs = {R"(C:\FW\Logs)", 0, true};
    installation.logFile = R"(C:\FW\Logs\DaemonManager.log)";
    installation.freeBytes = 0x200000;
    facts.proxy.library = {0, R"(C:\FW\App\DaemonMgrPS.dll)", "1.0.0"};
    facts.proxy.libraryThere = true;
    facts.supervisor.answer = SupervisorFacts::Answer::answers;
    facts.supervisor.processes = {{12, R"(C:\FW\App\DaemonManager.exe)", "1.0.0"}};
    facts.firewallService.name = "MpsSvc";
    facts.firewallService.startType = 2;
    facts.firewallService.state = 4;
    facts.wmi.answered = true;
    facts.wmi.knowsThisProcess = true;
    facts.wmi.executablePathFits = true;
    facts.crashDialogs.dialogsOff = true;
    facts.crashDialogs.errorMode = 2;
    return facts;
}

Finding Of(const DoctorFacts& facts, const std::string& check)
{
    for (const Finding& finding : Judge(facts)) {
        if (finding.check == check) {
            return finding;
        }
    }
    ADD_FAILURE() << "no check " << check;
    return {};
}

void ExpectFinding(const DoctorFacts& facts, const std::string& check, Verdict verdict,
                   const std::string& text)
{
    const Finding finding = Of(facts, check);
    EXPECT_EQ(finding.verdict, verdict) << check << ": " << finding.text;
    EXPECT_EQ(finding.text, text);
    EXPECT_EQ(finding.remedy.empty(), verdict == Verdict::ok) << finding.remedy;
}

TEST(DoctorVerdicts, of_a_healthy_machine_are_all_ok)
{
    const std::vector<Finding> findings = Judge(Healthy());
    std::vector<std::string> checks;
    for (const Finding& finding : findings) {
        EXPECT_EQ(finding.verdict, Verdict::ok) << finding.check << ": " << finding.text;
        EXPECT_EQ(finding.remedy, "") << finding.check;
        checks.push_back(finding.check);
    }
    EXPECT_EQ(checks, (std::vector<std::string>{"rights", "registry", "app-folder", "log-folder",
                                                "proxy", "firewall-service", "supervisor", "wmi",
                                                "crash-dialogs", "error-boxes", "firewall-rules"}));
    EXPECT_EQ(ExitCodeOf(findings), 0);
}

TEST(DoctorVerdicts, warn_of_an_ordinary_user)
{
    DoctorFacts facts = Healthy();
    facts.installation.administrator = false;
    ExpectFinding(
        facts, "rights", Verdict::warning,
        "this command does not run as administrator: the results below hold for this user");
}

TEST(DoctorVerdicts, name_the_key_and_the_root)
{
    ExpectFinding(
        Healthy(), "registry", Verdict::ok,
        R"(HKLM\SOFTWARE\UnitWarden\CurrentVersion, Pathname C:\FW\App: the firmware root is C:\FW)");
}

TEST(DoctorVerdicts, fail_without_either_key)
{
    DoctorFacts facts = Healthy();
    facts.installation.currentKey = {kCurrentKey, 2, 0, ""};
    facts.installation.root = "";
    ExpectFinding(facts, "registry", Verdict::failure,
                  R"(neither HKLM\SOFTWARE\UnitWarden\CurrentVersion nor )"
                  R"(HKLM\SOFTWARE\VANTORO_QRX\CurrentVersion can be opened: error 2 (not found))");
    EXPECT_EQ(Of(facts, "registry").remedy,
              "As administrator, with the path of your own folder: "
              R"(reg add HKLM\SOFTWARE\UnitWarden\CurrentVersion /v Pathname /d C:\FIRMWARE\App)");
    ExpectFinding(facts, "app-folder", Verdict::failure, kRootUnknown);
    ExpectFinding(facts, "log-folder", Verdict::failure, kRootUnknown);
}

TEST(DoctorVerdicts, fail_for_a_key_without_a_value_even_when_the_older_one_has_it)
{
    DoctorFacts facts = Healthy();
    facts.installation.currentKey = {kCurrentKey, 0, 2, ""};
    ExpectFinding(
        facts, "registry", Verdict::failure,
        R"(HKLM\SOFTWARE\UnitWarden\CurrentVersion, value Pathname: error 2 (not found))");
    facts.installation.olderKey = {kOlderKey, 0, 0, R"(C:\FW)"};
    ExpectFinding(
        facts, "registry", Verdict::failure,
        R"(HKLM\SOFTWARE\UnitWarden\CurrentVersion, value Pathname: error 2 (not found); )"
        R"(HKLM\SOFTWARE\VANTORO_QRX\CurrentVersion has this value, but the supervisor does not )"
        R"(read it while HKLM\SOFTWARE\UnitWarden\CurrentVersion exists)");
    facts.installation.olderKey.openError = 2;
    facts.installation.currentKey.valueError = 234;
    ExpectFinding(
        facts, "registry", Verdict::failure,
        R"(HKLM\SOFTWARE\UnitWarden\CurrentVersion, value Pathname: longer than 254 characters)");
}

TEST(DoctorVerdicts, take_the_older_key_when_there_is_no_other)
{
    DoctorFacts facts = Healthy();
    facts.installation.currentKey = {kCurrentKey, 2, 0, ""};
    facts.installation.olderKey = {kOlderKey, 0, 0, R"(C:\FW)"};
    ExpectFinding(
        facts, "registry", Verdict::ok,
        R"(HKLM\SOFTWARE\VANTORO_QRX\CurrentVersion, Pathname C:\FW: the firmware root is C:\FW)");
}

TEST(DoctorVerdicts, warn_of_keys_that_disagree)
{
    DoctorFacts facts = Healthy();
    facts.installation.olderKey = {kOlderKey, 0, 0, R"(D:\FW\App)"};
    ExpectFinding(
        facts, "registry", Verdict::warning,
        R"(HKLM\SOFTWARE\UnitWarden\CurrentVersion, Pathname C:\FW\App: the firmware root is )"
        R"(C:\FW; HKLM\SOFTWARE\VANTORO_QRX\CurrentVersion says D:\FW\App, which the supervisor )"
        "does not read");
    facts.installation.olderKey.pathname = R"(C:\FW\App)";
    EXPECT_EQ(Of(facts, "registry").verdict, Verdict::ok);
}

TEST(DoctorVerdicts, warn_of_a_root_that_is_no_full_path)
{
    DoctorFacts facts = Healthy();
    facts.installation.currentKey.pathname = R"(FW\App)";
    facts.installation.root = "FW";
    ExpectFinding(
        facts, "registry", Verdict::warning,
        R"(HKLM\SOFTWARE\UnitWarden\CurrentVersion, Pathname FW\App: the firmware root is FW, )"
        "which is not a full path");
    facts.installation.root = R"(\\server\FW)";
    EXPECT_EQ(Of(facts, "registry").verdict, Verdict::ok);
}

TEST(DoctorVerdicts, fail_without_the_app_folder)
{
    DoctorFacts facts = Healthy();
    facts.installation.app = {R"(C:\FW\App)", 3, false};
    ExpectFinding(facts, "app-folder", Verdict::failure, R"(C:\FW\App: error 3 (not found))");
    facts.installation.app.error = 5;
    ExpectFinding(facts, "app-folder", Verdict::failure, R"(C:\FW\App: error 5 (access denied))");
    facts.installation.app.error = 0;
    ExpectFinding(facts, "app-folder", Verdict::failure, R"(C:\FW\App is not a folder)");
}

TEST(DoctorVerdicts, tell_a_log_that_cannot_be_written)
{
    DoctorFacts facts = Healthy();
    facts.installation.logFileError = 2; // it is made with the first line
    ExpectFinding(facts, "log-folder", Verdict::ok, R"(C:\FW\Logs can be written to)");
    facts.installation.freeBytes = 0x1FFFFF;
    ExpectFinding(facts, "log-folder", Verdict::warning,
                  R"(only 2097151 bytes are free on the disk of C:\FW\Logs\DaemonManager.log)");
    facts.installation.logFileError = 32;
    ExpectFinding(facts, "log-folder", Verdict::failure,
                  R"(C:\FW\Logs\DaemonManager.log cannot be written: error 32)");
    facts.installation.logs.isFolder = false;
    ExpectFinding(facts, "log-folder", Verdict::failure, R"(C:\FW\Logs is not a folder)");
    facts.installation.logs.error = 5;
    ExpectFinding(facts, "log-folder", Verdict::failure,
                  R"(C:\FW\Logs cannot be written to: error 5 (access denied))");
    facts.installation.logs.error = 2;
    ExpectFinding(facts, "log-folder", Verdict::warning, R"(C:\FW\Logs does not exist yet)");
}

TEST(DoctorVerdicts, tell_what_is_wrong_with_the_proxy)
{
    DoctorFacts facts = Healthy();
    facts.proxy.library.version = "0.9.0";
    ExpectFinding(facts, "proxy", Verdict::warning,
                  R"(C:\FW\App\DaemonMgrPS.dll has version 0.9.0, this program has version 1.0.0)");
    facts.proxy.library.version = "";
    ExpectFinding(
        facts, "proxy", Verdict::warning,
        R"(C:\FW\App\DaemonMgrPS.dll has an unknown version, this program has version 1.0.0)");
    facts.proxy.libraryThere = false;
    ExpectFinding(facts, "proxy", Verdict::failure,
                  R"(C:\FW\App\DaemonMgrPS.dll is registered, but the file does not exist)");
    facts.proxy.libraryError = 2;
    ExpectFinding(facts, "proxy", Verdict::failure,
                  "the proxy/stub is registered, but without the path of its library");
    facts.proxy.interfaceError = 2;
    ExpectFinding(facts, "proxy", Verdict::failure,
                  "DaemonMgrPS.dll is not registered: no client can call the supervisor");
}

TEST(DoctorVerdicts, tell_how_the_supervisor_answers)
{
    DoctorFacts facts = Healthy();
    SupervisorFacts& supervisor = facts.supervisor;
    ExpectFinding(facts, "supervisor", Verdict::ok,
                  "published and answering (process 12, version 1.0.0)");
    supervisor.processes[0].version = "0.9.0";
    ExpectFinding(
        facts, "supervisor", Verdict::warning,
        "published and answering (process 12, version 0.9.0); this program has version 1.0.0");
    supervisor.processes.push_back({13, "", ""});
    ExpectFinding(facts, "supervisor", Verdict::warning,
                  "published and answering (process 12, version 0.9.0, process 13)");
    supervisor.processes.clear(); // under another file name
    ExpectFinding(facts, "supervisor", Verdict::ok, "published and answering");
    supervisor.answer = SupervisorFacts::Answer::silent;
    ExpectFinding(facts, "supervisor", Verdict::failure,
                  "the supervisor is published, but does not answer");
    supervisor.answer = SupervisorFacts::Answer::failed;
    supervisor.detail = "detach: 0x80070005";
    ExpectFinding(facts, "supervisor", Verdict::failure,
                  "the supervisor is published, but a call fails: detach: 0x80070005");
    supervisor.answer = SupervisorFacts::Answer::proxyNotRegistered;
    ExpectFinding(facts, "supervisor", Verdict::failure,
                  "the supervisor runs, but no client can call it without its proxy/stub");
    supervisor.answer = SupervisorFacts::Answer::notRunning;
    ExpectFinding(facts, "supervisor", Verdict::failure,
                  "no supervisor is running on this machine");
    supervisor.processes = {{12, "", "1.0.0"}};
    ExpectFinding(
        facts, "supervisor", Verdict::failure,
        "DaemonManager.exe runs (process 12, version 1.0.0) but is not published: it is "
        "starting and waits for the firewall service, or its publication failed, or another "
        "user runs it");
}

TEST(DoctorVerdicts, tell_the_firewall_service_that_start_up_would_wait_for)
{
    DoctorFacts facts = Healthy();
    FirewallServiceFacts& service = facts.firewallService;
    ExpectFinding(facts, "firewall-service", Verdict::ok, "MpsSvc is running");
    service.state = 1;
    ExpectFinding(
        facts, "firewall-service", Verdict::failure,
        "MpsSvc is enabled, but not running (state 1): a supervisor that starts now waits "
        "for the service without end");
    service.startType = 4;
    ExpectFinding(facts, "firewall-service", Verdict::warning, "MpsSvc is disabled");
    service.queryError = 5;
    ExpectFinding(facts, "firewall-service", Verdict::warning,
                  "the firewall service cannot be queried: error 5 (access denied)");
    service.serviceError = 1060;
    ExpectFinding(facts, "firewall-service", Verdict::warning,
                  "neither the service MpsSvc nor the service SharedAccess exists");
    service.managerError = 5;
    ExpectFinding(facts, "firewall-service", Verdict::failure,
                  "the service manager cannot be opened: error 5 (access denied)");
}

TEST(DoctorVerdicts, tell_what_wmi_keeps_from_the_supervisor)
{
    DoctorFacts facts = Healthy();
    WmiFacts& wmi = facts.wmi;
    ExpectFinding(facts, "wmi", Verdict::ok,
                  "WMI reports the executable path and the command line of a process");
    wmi.executablePathFits = false;
    ExpectFinding(facts, "wmi", Verdict::failure, "WMI reports a wrong executable path");
    wmi.commandLineResult = kDenied;
    ExpectFinding(facts, "wmi", Verdict::failure,
                  "WMI does not report the command line of a process: 0x80070005");
    wmi.executablePathResult = kDenied;
    ExpectFinding(facts, "wmi", Verdict::failure,
                  "WMI does not report the executable path of a process: 0x80070005");
    wmi.knowsThisProcess = false;
    ExpectFinding(facts, "wmi", Verdict::failure, "WMI does not find a process that runs");
    wmi.queryResult = kDenied;
    ExpectFinding(facts, "wmi", Verdict::failure, "the query for a process fails: 0x80070005");
    wmi.connectFailure = "Init WMI errror x";
    ExpectFinding(facts, "wmi", Verdict::failure,
                  R"(no connection to root\cimv2: Init WMI errror x)");
    wmi.answered = false;
    ExpectFinding(facts, "wmi", Verdict::failure, "WMI does not answer");
}

TEST(DoctorVerdicts, warn_of_windows_that_keep_a_dead_worker)
{
    DoctorFacts facts = Healthy();
    CrashDialogFacts& crash = facts.crashDialogs;
    crash.errorMode = 0;
    EXPECT_EQ(Of(facts, "error-boxes").verdict, Verdict::warning);
    crash.dialogsOff = false;
    EXPECT_EQ(Of(facts, "crash-dialogs").verdict, Verdict::warning);
    crash.offForThisUser = true;
    ExpectFinding(facts, "crash-dialogs", Verdict::ok,
                  "off for this user; the supervisor must run as the same user");
    crash.reportingDisabled = true;
    ExpectFinding(facts, "crash-dialogs", Verdict::ok, "off: a worker that crashes ends at once");
    crash.debugger = "drdebug.exe -p %ld";
    ExpectFinding(facts, "crash-dialogs", Verdict::warning,
                  "Windows starts a debugger when a worker crashes, and the process stays until "
                  "the debugger releases it: drdebug.exe -p %ld");
}

TEST(DoctorVerdicts, count_the_firewall_rules)
{
    using Program = FirewallRuleFacts::Program;
    DoctorFacts facts = Healthy();
    facts.firewallRules.rules = {{R"(allowing C:\a.exe)", R"(C:\a.exe)", Program::there}};
    ExpectFinding(facts, "firewall-rules", Verdict::ok,
                  "1 rules \"allowing ...\", 0 whose program is gone, 0 duplicate");
    facts.firewallRules.rules.push_back({R"(allowing C:\A.exe)", R"(C:\A.exe)", Program::there});
    facts.firewallRules.rules.push_back({R"(allowing C:\b.exe)", R"(C:\b.exe)", Program::gone});
    ExpectFinding(facts, "firewall-rules", Verdict::warning,
                  "3 rules \"allowing ...\", 1 whose program is gone, 1 duplicate\n"
                  "gone: \"allowing C:\\b.exe\"\nduplicate: \"allowing C:\\A.exe\"");
    facts.firewallRules.result = kDenied;
    ExpectFinding(facts, "firewall-rules", Verdict::warning,
                  "the rules of the firewall cannot be listed: 0x80070005");
}

TEST(DoctorVerdicts, become_an_exit_code_that_says_the_worst)
{
    const Finding warning{"wmi", Verdict::warning, "", ""};
    const Finding failure{"wmi", Verdict::failure, "", ""};
    EXPECT_EQ(ExitCodeOf({}), 0);
    EXPECT_EQ(ExitCodeOf({warning}), 1);
    EXPECT_EQ(ExitCodeOf({warning, {"supervisor", Verdict::failure, "", ""}}), 3);
    EXPECT_EQ(ExitCodeOf({{"proxy", Verdict::failure, "", ""}, warning}), 3);
    EXPECT_EQ(ExitCodeOf({{"proxy", Verdict::failure, "", ""}, failure}), 4);
}

} // namespace
} // namespace vqrx::test
