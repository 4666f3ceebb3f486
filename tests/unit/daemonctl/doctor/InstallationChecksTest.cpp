#include "InstallationChecks.h"

#include "ExpectFinding.h"

#include <gtest/gtest.h>

namespace vqrx::test {
namespace {

using namespace client::v0;

constexpr const char* kCurrentKey = R"(HKLM\SOFTWARE\UnitWarden\CurrentVersion)";
constexpr const char* kOlderKey = R"(HKLM\SOFTWARE\VANTORO_QRX\CurrentVersion)";
constexpr const char* kRootUnknown =
    "the folder is not known, because the registry does not name the firmware root";

InstallationFacts HealthyInstallation()
{
    InstallationFacts facts;
    facts.administrator = true;
    facts.currentKey = {kCurrentKey, 0, 0, R"(C:\FW\App)"};
    facts.olderKey = {kOlderKey, 2, 0, ""};
    facts.root = R"(C:\FW)";
    facts.app = {R"(C:\FW\App)", 0, true};
    facts.logs = {R"(C:\FW\Logs)", 0, true};
    facts.logFile = R"(C:\FW\Logs\DaemonManager.log)";
    facts.freeBytes = 0x200000;
    return facts;
}

TEST(RightsCheck, Warns_if_the_user_is_no_administrator)
{
    InstallationFacts facts = HealthyInstallation();
    ExpectFinding(JudgeRights(facts), Verdict::kOk, "this command runs as administrator");
    facts.administrator = false;
    ExpectFinding(
        JudgeRights(facts), Verdict::kWarning,
        "this command does not run as administrator: the results below hold for this user");
}

TEST(RegistryCheck, Names_the_key_the_value_and_the_firmware_root)
{
    ExpectFinding(
        JudgeRegistry(HealthyInstallation()), Verdict::kOk,
        R"(HKLM\SOFTWARE\UnitWarden\CurrentVersion, Pathname C:\FW\App: the firmware root is C:\FW)");
}

TEST(RegistryCheck, Fails_without_either_key_and_shows_the_command_that_adds_one)
{
    InstallationFacts facts = HealthyInstallation();
    facts.currentKey = {kCurrentKey, 2, 0, ""};
    facts.root = "";
    const Finding finding = JudgeRegistry(facts);
    ExpectFinding(finding, Verdict::kFailure,
                  R"(neither HKLM\SOFTWARE\UnitWarden\CurrentVersion nor )"
                  R"(HKLM\SOFTWARE\VANTORO_QRX\CurrentVersion can be opened: error 2 (not found))");
    EXPECT_EQ(finding.remedy,
              "As administrator, with the path of your own folder: "
              R"(reg add HKLM\SOFTWARE\UnitWarden\CurrentVersion /v Pathname /d C:\FIRMWARE\App)");
    ExpectFinding(JudgeApp(facts), Verdict::kFailure, kRootUnknown);
    ExpectFinding(JudgeLog(facts), Verdict::kFailure, kRootUnknown);
}

TEST(RegistryCheck, Fails_for_a_key_without_the_value_even_if_the_older_key_has_it)
{
    InstallationFacts facts = HealthyInstallation();
    facts.currentKey = {kCurrentKey, 0, 2, ""};
    ExpectFinding(
        JudgeRegistry(facts), Verdict::kFailure,
        R"(HKLM\SOFTWARE\UnitWarden\CurrentVersion, value Pathname: error 2 (not found))");
    facts.olderKey = {kOlderKey, 0, 0, R"(C:\FW)"};
    ExpectFinding(
        JudgeRegistry(facts), Verdict::kFailure,
        R"(HKLM\SOFTWARE\UnitWarden\CurrentVersion, value Pathname: error 2 (not found); )"
        R"(HKLM\SOFTWARE\VANTORO_QRX\CurrentVersion has this value, but the supervisor does not )"
        R"(read it while HKLM\SOFTWARE\UnitWarden\CurrentVersion exists)");
}

TEST(RegistryCheck, Fails_for_a_value_that_is_too_long_for_the_supervisor)
{
    InstallationFacts facts = HealthyInstallation();
    facts.currentKey = {kCurrentKey, 0, 234, ""};
    ExpectFinding(
        JudgeRegistry(facts), Verdict::kFailure,
        R"(HKLM\SOFTWARE\UnitWarden\CurrentVersion, value Pathname: longer than 254 characters)");
}

TEST(RegistryCheck, Takes_the_older_key_if_the_current_one_does_not_exist)
{
    InstallationFacts facts = HealthyInstallation();
    facts.currentKey = {kCurrentKey, 2, 0, ""};
    facts.olderKey = {kOlderKey, 0, 0, R"(C:\FW)"};
    ExpectFinding(
        JudgeRegistry(facts), Verdict::kOk,
        R"(HKLM\SOFTWARE\VANTORO_QRX\CurrentVersion, Pathname C:\FW: the firmware root is C:\FW)");
}

TEST(RegistryCheck, Warns_only_if_the_two_keys_have_different_values)
{
    InstallationFacts facts = HealthyInstallation();
    facts.olderKey = {kOlderKey, 0, 0, R"(D:\FW\App)"};
    ExpectFinding(
        JudgeRegistry(facts), Verdict::kWarning,
        R"(HKLM\SOFTWARE\UnitWarden\CurrentVersion, Pathname C:\FW\App: the firmware root is )"
        R"(C:\FW; HKLM\SOFTWARE\VANTORO_QRX\CurrentVersion says D:\FW\App, which the supervisor )"
        "does not read");
    facts.olderKey.pathname = R"(C:\FW\App)";
    EXPECT_EQ(JudgeRegistry(facts).verdict, Verdict::kOk);
}

TEST(RegistryCheck, Warns_if_the_root_is_not_a_full_path)
{
    InstallationFacts facts = HealthyInstallation();
    facts.currentKey.pathname = R"(FW\App)";
    facts.root = "FW";
    ExpectFinding(
        JudgeRegistry(facts), Verdict::kWarning,
        R"(HKLM\SOFTWARE\UnitWarden\CurrentVersion, Pathname FW\App: the firmware root is FW, )"
        "which is not a full path");
    facts.root = R"(\\server\FW)";
    EXPECT_EQ(JudgeRegistry(facts).verdict, Verdict::kOk);
}

TEST(AppFolderCheck, Fails_if_the_folder_is_missing_forbidden_or_a_file)
{
    InstallationFacts facts = HealthyInstallation();
    ExpectFinding(JudgeApp(facts), Verdict::kOk, R"(C:\FW\App)");
    facts.app = {R"(C:\FW\App)", 3, false};
    ExpectFinding(JudgeApp(facts), Verdict::kFailure, R"(C:\FW\App: error 3 (not found))");
    facts.app.error = 5;
    ExpectFinding(JudgeApp(facts), Verdict::kFailure, R"(C:\FW\App: error 5 (access denied))");
    facts.app.error = 0;
    ExpectFinding(JudgeApp(facts), Verdict::kFailure, R"(C:\FW\App is not a folder)");
}

TEST(LogFolderCheck, Is_ok_while_the_log_file_does_not_exist_yet)
{
    InstallationFacts facts = HealthyInstallation();
    facts.logFileError = 2; // the supervisor creates the file with the first record
    ExpectFinding(JudgeLog(facts), Verdict::kOk, R"(C:\FW\Logs can be written to)");
}

TEST(LogFolderCheck, Warns_if_less_than_2_MiB_are_free)
{
    InstallationFacts facts = HealthyInstallation();
    facts.freeBytes = 0x1FFFFF;
    ExpectFinding(JudgeLog(facts), Verdict::kWarning,
                  R"(only 2097151 bytes are free on the disk of C:\FW\Logs\DaemonManager.log)");
}

TEST(LogFolderCheck, Warns_of_a_damaged_log_and_shows_how_to_read_it)
{
    InstallationFacts facts = HealthyInstallation();
    facts.damagedLogs = {R"(C:\FW\Logs\DaemonManager.log.damaged)"};
    const Finding finding = JudgeLog(facts);
    ExpectFinding(finding, Verdict::kWarning,
                  "C:\\FW\\Logs can be written to\n"
                  "C:\\FW\\Logs\\DaemonManager.log.damaged: the supervisor could not read this log "
                  "and began a new one");
    EXPECT_EQ(finding.remedy, "Read the damaged log, then delete it: daemonctl log --file "
                              R"("C:\FW\Logs\DaemonManager.log.damaged")");
    facts.freeBytes = 0;
    EXPECT_EQ(JudgeLog(facts).remedy,
              "Free disk space: the log grows to 1 MiB. Read the damaged log, then delete it: "
              R"(daemonctl log --file "C:\FW\Logs\DaemonManager.log.damaged")");
}

TEST(LogFolderCheck, Damaged_log_whose_name_cannot_be_pasted_is_in_no_command)
{
    InstallationFacts facts = HealthyInstallation();
    facts.damagedLogs = {R"(C:\100%\Logs\DaemonManager.log.damaged)"};
    EXPECT_EQ(JudgeLog(facts).remedy,
              "Read the damaged log with daemonctl log and its option --file, then delete it.");
}

TEST(LogFolderCheck, Warns_of_damage_in_the_log_itself)
{
    InstallationFacts facts = HealthyInstallation();
    facts.logDamage = "1 line could not be read";
    const Finding finding = JudgeLog(facts);
    ExpectFinding(finding, Verdict::kWarning,
                  "C:\\FW\\Logs can be written to\n"
                  "C:\\FW\\Logs\\DaemonManager.log: 1 line could not be read");
    EXPECT_EQ(finding.remedy,
              "The rest of the log can be read, and newer records overwrite the damage. If damage "
              "comes again, look at disk and power supply.");
}

TEST(LogFolderCheck, Warns_of_a_log_that_cannot_be_read)
{
    InstallationFacts facts = HealthyInstallation();
    facts.logUnreadable = "C:\\FW\\Logs\\DaemonManager.log cannot be opened";
    const Finding finding = JudgeLog(facts);
    ExpectFinding(finding, Verdict::kWarning,
                  "C:\\FW\\Logs can be written to\n"
                  "C:\\FW\\Logs\\DaemonManager.log cannot be opened");
    EXPECT_EQ(finding.remedy, "Another program may have held the log for a moment: run daemonctl "
                              "doctor again. The check file-rights shows who may read it.");
}

TEST(LogFolderCheck, Names_each_damaged_log)
{
    InstallationFacts facts = HealthyInstallation();
    facts.damagedLogs = {"first.damaged", "second.damaged2"};
    const Finding finding = JudgeLog(facts);
    EXPECT_NE(finding.text.find("\nfirst.damaged: "), std::string::npos);
    EXPECT_NE(finding.text.find("\nsecond.damaged2: "), std::string::npos);
}

TEST(LogFolderCheck, Fails_if_the_running_supervisor_has_written_nothing)
{
    InstallationFacts facts = HealthyInstallation();
    facts.logIsCurrent = true;
    EXPECT_EQ(JudgeLog(facts).verdict, Verdict::kOk);
    facts.logIsCurrent = false;
    ExpectFinding(JudgeLog(facts), Verdict::kFailure,
                  "C:\\FW\\Logs\\DaemonManager.log holds no record of the running supervisor: the "
                  "supervisor cannot read or write it\nuntil it holds one, daemonctl apply and the "
                  "guard attach and launch nothing: they could start a program twice");
}

TEST(LogFolderCheck, Fails_if_folder_or_file_cannot_be_written_and_warns_if_the_folder_is_missing)
{
    InstallationFacts facts = HealthyInstallation();
    facts.logFileError = 32;
    ExpectFinding(JudgeLog(facts), Verdict::kFailure,
                  R"(C:\FW\Logs\DaemonManager.log cannot be written: error 32)");
    facts.logs.isFolder = false;
    ExpectFinding(JudgeLog(facts), Verdict::kFailure, R"(C:\FW\Logs is not a folder)");
    facts.logs.error = 5;
    ExpectFinding(JudgeLog(facts), Verdict::kFailure,
                  R"(C:\FW\Logs cannot be written to: error 5 (access denied))");
    facts.logs.error = 2;
    ExpectFinding(JudgeLog(facts), Verdict::kWarning, R"(C:\FW\Logs does not exist yet)");
}

} // namespace
} // namespace vqrx::test
