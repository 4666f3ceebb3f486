// daemonctl doctor on a machine without an installation, on a healthy one, and on faulty ones.
#include "ChildProcess.h"
#include "Daemonctl.h"
#include "OpenToAll.h"
#include "PrefixClass.h"
#include "StandInFirewall.h"
#include "SupervisorProcess.h"
#include "TestService.h"

#include <windows.h>

#include <nlohmann/json.hpp>

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <string>

namespace vqrx::test {
namespace {

using Json = nlohmann::json;

// Changes the settings of Windows so that a crashed program shows no dialog. The destructor
// restores the settings.
class QuietCrashes {
public:
    QuietCrashes()
    {
        DWORD size = sizeof oldMode_;
        hadMode_ = RegGetValueA(HKEY_LOCAL_MACHINE, kWindows, "ErrorMode", RRF_RT_REG_DWORD,
                                nullptr, &oldMode_, &size) == ERROR_SUCCESS;
        Set(kReporting, "DontShowUI", 1);
        Set(kWindows, "ErrorMode", 2);
    }
    QuietCrashes(const QuietCrashes&) = delete;
    QuietCrashes& operator=(const QuietCrashes&) = delete;
    ~QuietCrashes()
    {
        RegDeleteKeyValueA(HKEY_LOCAL_MACHINE, kReporting, "DontShowUI");
        if (hadMode_) {
            Set(kWindows, "ErrorMode", oldMode_);
        } else {
            RegDeleteKeyValueA(HKEY_LOCAL_MACHINE, kWindows, "ErrorMode");
        }
    }

private:
    static constexpr const char* kReporting =
        R"(SOFTWARE\Microsoft\Windows\Windows Error Reporting)";
    static constexpr const char* kWindows = R"(SYSTEM\CurrentControlSet\Control\Windows)";

    static void Set(const char* key, const char* value, DWORD number)
    {
        RegSetKeyValueA(HKEY_LOCAL_MACHINE, key, value, REG_DWORD, &number, sizeof number);
    }

    DWORD oldMode_ = 0;
    bool hadMode_ = false;
};

std::map<std::string, std::string> Verdicts(const Answer& answer)
{
    std::map<std::string, std::string> verdicts;
    const Json report = Json::parse(answer.output);
    for (const Json& check : report.at("checks")) {
        verdicts[check.at("check")] = check.at("verdict");
    }
    return verdicts;
}

// Under Wine the programs of this build lie on drive Z:, which is a link of the host.
bool RightsOfProductAreSound()
{
    return Daemonctl("rights \"" + ProductProgram("daemonctl.exe") + "\"").exitCode == 0;
}

TEST(Doctor, Doctor_reports_failures_on_a_machine_without_an_installation)
{
    RequireNoService("MpsSvc");
    const FirmwareRegistry registry;
    const Answer answer = Daemonctl("doctor --json");
    EXPECT_EQ(answer.exitCode, 4U);
    EXPECT_EQ(answer.error, "");
    const Json report = Json::parse(answer.output);
    EXPECT_EQ(report.at("version"), "1.0.0");
    EXPECT_EQ(report.at("worst"), "failure");
    auto verdicts = Verdicts(answer);
    for (const char* check : {"registry", "app-folder", "log-folder", "proxy", "supervisor"}) {
        EXPECT_EQ(verdicts[check], "failure") << check;
    }
    EXPECT_EQ(verdicts["firewall-service"], "warning");
}

TEST(Doctor, Doctor_reports_no_failure_on_a_healthy_machine_and_changes_nothing)
{
    const PrefixStandIns standIns(PrefixStandIns::Wmi::kStandIn);
    const QuietCrashes quiet;
    TestService firewall("MpsSvc");
    firewall.Start();
    SupervisorProcess supervisor;
    ASSERT_TRUE(supervisor.WaitForLog(2, "Deamon Thread started"));
    const auto before = supervisor.Log().size();
    const Answer answer = Daemonctl("doctor");
    EXPECT_EQ(answer.error, "");
    if (RightsOfProductAreSound()) {
        EXPECT_EQ(answer.exitCode, 0U) << answer;
        EXPECT_NE(answer.output.find("\n17 ok, 0 warnings, 0 failures\n"), std::string::npos)
            << answer;
    } else {
        EXPECT_EQ(answer.exitCode, 1U) << answer;
        EXPECT_NE(answer.output.find("\n16 ok, 1 warning, 0 failures\n"), std::string::npos)
            << answer;
        EXPECT_NE(answer.output.find("warning  file-rights"), std::string::npos) << answer;
    }
    EXPECT_NE(answer.output.find("ok       com-security      every authenticated caller may call"),
              std::string::npos)
        << answer;
    EXPECT_NE(answer.output.find("supervisor        published and answering (process " +
                                 std::to_string(supervisor.Process().Pid()) + ", version 1.0.0)"),
              std::string::npos)
        << answer;
    EXPECT_EQ(supervisor.Log().size(), before);
}

// The log is damaged, and folders stand in the way of the names under which it could be kept.
TEST(Doctor, Doctor_reports_a_log_that_the_running_supervisor_cannot_read)
{
    const SupervisorProcess supervisor([](FirmwareRegistry& registry, const std::string& root) {
        SupervisorProcess::InstalledInApp(registry, root);
        const std::filesystem::path logs = std::filesystem::path(root) / "Logs";
        for (const char* name : {"DaemonManager.log.damaged", "DaemonManager.log.damaged2"}) {
            std::filesystem::create_directories(logs / name / "not empty");
        }
        std::ofstream(logs / "DaemonManager.log", std::ios::binary)
            << "0x0000001F\r\n0;date;x;2;damaged\r\n";
    });
    const Answer answer = Daemonctl("doctor");
    EXPECT_EQ(answer.exitCode, 4U);
    EXPECT_NE(answer.output.find("failure  log-folder        " + supervisor.LogFile() +
                                 " holds no record of the running supervisor: the supervisor "
                                 "cannot read or write it\n"),
              std::string::npos)
        << answer;
}

TEST(Doctor, Doctor_names_a_process_that_only_has_the_name_of_the_supervisor)
{
    const SupervisorProcess supervisor;
    const TempFolder folder;
    const std::string copy = folder.File("DaemonManager.exe");
    std::filesystem::copy_file(TestProgram("no_windows"), copy);
    const ChildProcess namesake("\"" + copy + "\"");
    const Answer answer = Daemonctl("doctor");
    const std::string processId = std::to_string(namesake.Pid());
    EXPECT_NE(answer.output.find("process " + processId +
                                 " only has the supervisor's name: it runs " + copy + " as "),
              std::string::npos)
        << answer;
    EXPECT_NE(answer.output.find("taskkill /f /pid " + processId + "\n"), std::string::npos)
        << answer;
    // The namesake hides nothing about the supervisor.
    EXPECT_NE(answer.output.find("ok       daemons           0 daemons, 0 in trouble\n"),
              std::string::npos)
        << answer;
}

TEST(Doctor, Doctor_names_a_folder_that_others_may_change_and_a_proxy_of_one_user)
{
    const SupervisorProcess supervisor;
    OpenToAll(supervisor.App());
    constexpr const char* kClass =
        R"(Software\Classes\CLSID\{C307E9F6-67C0-4C74-B1BD-37EFB9882701})";
    constexpr char kLibrary[] = "C:\\evil.dll";
    ASSERT_EQ(RegSetKeyValueA(HKEY_CURRENT_USER,
                              (std::string(kClass) + R"(\InProcServer32)").c_str(), nullptr, REG_SZ,
                              kLibrary, sizeof kLibrary),
              ERROR_SUCCESS);
    const Answer answer = Daemonctl("doctor");
    RegDeleteTreeA(HKEY_CURRENT_USER, kClass);
    EXPECT_NE(answer.output.find("may write to " + supervisor.App() + "\n"), std::string::npos)
        << answer;
    EXPECT_NE(answer.output.find("icacls \"" + supervisor.App() + "\" /inheritance:r"),
              std::string::npos)
        << answer;
    EXPECT_NE(answer.output.find("warning  proxy-users"), std::string::npos) << answer;
    EXPECT_NE(answer.output.find(" load C:\\evil.dll: HKU\\S-1-5-"), std::string::npos) << answer;
}

TEST(Doctor, Doctor_ends_with_exit_code_3_if_only_the_supervisor_is_missing)
{
    const PrefixStandIns standIns(PrefixStandIns::Wmi::kStandIn);
    const QuietCrashes quiet;
    TestService firewall("MpsSvc");
    firewall.Start();
    SupervisorProcess supervisor;
    EXPECT_EQ(supervisor.Exit(), 0U);
    const Answer answer = Daemonctl("doctor");
    EXPECT_EQ(answer.exitCode, 3U) << answer;
    EXPECT_NE(answer.output.find("failure  supervisor        no supervisor is running on this "
                                 "machine\n"),
              std::string::npos)
        << answer;
}

TEST(Doctor, Doctor_reports_a_supervisor_that_waits_for_the_firewall_service)
{
    const TestService firewall("MpsSvc"); // not started
    const TempFolder root;
    std::filesystem::create_directory(root.Path() / "App");
    FirmwareRegistry registry;
    registry.SetPathname(FirmwareRegistry::kCurrent, root.Path().string());
    const CapturedProgram supervisor(ProductProgram("DaemonManager.exe"));
    ASSERT_TRUE(WaitUntil(
        [&] { return supervisor.Error().find("Firewall: Waiting 1 s") != std::string::npos; }));
    const Answer answer = Daemonctl("doctor");
    EXPECT_EQ(answer.exitCode, 4U);
    EXPECT_NE(answer.output.find("failure  firewall-service  MpsSvc is enabled, but not running "
                                 "(state 1)"),
              std::string::npos)
        << answer;
    EXPECT_NE(answer.output.find("DaemonManager.exe runs (process " +
                                 std::to_string(supervisor.Pid()) +
                                 ", version 1.0.0) but is not published"),
              std::string::npos)
        << answer;
}

TEST(Doctor, Doctor_shows_dead_rules_and_removes_them_only_with_prune)
{
    const PrefixStandIns standIns(PrefixStandIns::Wmi::kStandIn);
    const std::string own = TestProgram("quits");
    const std::wstring wideOwn(own.begin(), own.end());
    StoreFirewallRule(L"allowing " + wideOwn, {wideOwn});
    StoreFirewallRule(L"allowing C:\\gone.exe", {L"C:\\gone.exe"});
    StoreFirewallRule(L"allowing C:\\other.exe", {L"C:\\not the same.exe"});
    const std::string shown = "gone: \"allowing C:\\gone.exe\"\n";
    Answer answer = Daemonctl("doctor");
    EXPECT_NE(answer.output.find(shown), std::string::npos) << answer;
    EXPECT_EQ(StoredFirewallRules().size(), 3U);
    answer = Daemonctl("doctor --prune");
    const std::string removed = "\nremoved \"allowing C:\\gone.exe\"\n";
    ASSERT_NE(answer.output.find(removed), std::string::npos) << answer;
    EXPECT_LT(answer.output.find(shown), answer.output.find(removed)) << answer;
    EXPECT_EQ(StoredFirewallRules().size(), 2U);
    EXPECT_EQ(StoredFirewallRules().count(L"allowing C:\\gone.exe"), 0U);
    EXPECT_EQ(Daemonctl("doctor --prune").output.find("removed"), std::string::npos);
    StoreFirewallRule(L"allowing C:\\gone.exe", {L"C:\\gone.exe"});
    answer = Daemonctl("doctor --prune --json");
    EXPECT_EQ(Json::parse(answer.output).at("removed_rules"), Json({"allowing C:\\gone.exe"}));
}

} // namespace
} // namespace vqrx::test
