#include "SessionChecks.h"

#include "ExpectFinding.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

namespace vqrx::test {
namespace {

using namespace client::v0;

constexpr const char* kAccountOfSession = "S-1-5-21-1-2-3-1001";
constexpr const char* kLocalSystem = "S-1-5-18";
constexpr const char* kGroupOfAdministrators = "S-1-5-32-544";
constexpr std::uint32_t kFullAccess = 0x001F01FF;
constexpr std::uint32_t kToRead = 0x001200A9;

// \Logs as the installer makes it for SYSTEM, administrators and one account.
SessionFacts FactsOfSession(const std::string& logsAccountSid)
{
    SessionFacts facts;
    facts.logsOnByItself = true;
    facts.account = R"(PC\video)";
    facts.accountSid = kAccountOfSession;
    facts.logs.path = R"(C:\FW\Logs)";
    facts.logs.kind = ObjectRights::Kind::kFolder;
    facts.logs.granted = {{kLocalSystem, "SYSTEM", kFullAccess},
                          {kGroupOfAdministrators, "Administrators", kFullAccess},
                          {logsAccountSid, "", kFullAccess}};
    return facts;
}

constexpr const char* kNobodyLogsOn =
    "Windows logs no user on by itself (AutoAdminLogon is not 1): after power-on nothing starts "
    "until somebody logs on";
constexpr const char* kNetplwiz =
    "As administrator: netplwiz. It asks for the password, which must not stand in a command line: "
    "docs/unattended.md, \"Automatic logon\".";
constexpr const char* kMayNotWrite =
    R"(the rights of C:\FW\Logs let neither PC\video nor all users write there: the guard of the )"
    "session ends at each logon (error 5)";
constexpr const char* kGiveAccess =
    "As administrator:\n"
    R"(icacls "C:\FW\Logs" /grant "*S-1-5-21-1-2-3-1001:(OI)(CI)F")"
    "\n"
    R"(reg add HKLM\SOFTWARE\Microsoft\Windows\CurrentVersion\Uninstall\DaemonManager /v Account )"
    "/d S-1-5-21-1-2-3-1001 /f";

TEST(SessionCheck, Account_that_is_logged_on_by_itself_and_may_write_the_log_is_ok)
{
    ExpectFinding(
        JudgeSession(FactsOfSession(kAccountOfSession)), Verdict::kOk,
        R"(Windows logs PC\video on by itself, and this account may write to C:\FW\Logs)");
}

TEST(SessionCheck, Warns_if_nobody_is_logged_on_at_power_on)
{
    SessionFacts facts = FactsOfSession(kAccountOfSession);
    facts.logsOnByItself = false;
    const Finding finding = JudgeSession(facts);
    ExpectFinding(finding, Verdict::kWarning, kNobodyLogsOn);
    EXPECT_EQ(finding.remedy, kNetplwiz);
}

TEST(SessionCheck, Warns_of_an_automatic_logon_whose_account_does_not_exist)
{
    SessionFacts facts = FactsOfSession(kAccountOfSession);
    facts.accountSid.clear();
    ExpectFinding(JudgeSession(facts), Verdict::kWarning,
                  R"(Windows does not find the account that it is to log on by itself: PC\video)");
    facts.account.clear();
    ExpectFinding(
        JudgeSession(facts), Verdict::kWarning,
        "Windows does not find the account that it is to log on by itself: none is named");
}

TEST(SessionCheck, Warns_of_an_account_that_the_folder_of_the_logs_does_not_let_in)
{
    const Finding finding = JudgeSession(FactsOfSession("S-1-5-21-1-2-3-1002"));
    ExpectFinding(finding, Verdict::kWarning, kMayNotWrite);
    EXPECT_EQ(finding.remedy, kGiveAccess);
    SessionFacts reads = FactsOfSession(kAccountOfSession);
    reads.logs.granted.back().mask = kToRead;
    ExpectFinding(JudgeSession(reads), Verdict::kWarning, kMayNotWrite);
}

// icacls would change the rights of what the link leads to.
TEST(SessionCheck, Gives_no_command_for_a_folder_that_is_a_link)
{
    SessionFacts facts = FactsOfSession("S-1-5-21-1-2-3-1002");
    facts.logs.reparsePoint = true;
    const Finding finding = JudgeSession(facts);
    ExpectFinding(finding, Verdict::kWarning, R"(C:\FW\Logs is a junction or a link)");
    EXPECT_EQ(finding.remedy,
              "Replace C:\\FW\\Logs by a folder: somebody may turn the link elsewhere.");
}

TEST(SessionCheck, Gives_no_command_for_a_folder_below_a_link)
{
    constexpr const char* kReplace =
        R"(Replace C:\FW by a folder: somebody may turn the link elsewhere.)";
    SessionFacts facts = FactsOfSession("S-1-5-21-1-2-3-1002");
    facts.linkAbove = R"(C:\FW)";
    const Finding denied = JudgeSession(facts);
    ExpectFinding(denied, Verdict::kWarning,
                  std::string(kMayNotWrite) + "\nC:\\FW is a junction or a link");
    EXPECT_EQ(denied.remedy, kReplace);
    facts.logs.error = 2;
    EXPECT_EQ(JudgeSession(facts).remedy, kReplace);
    facts = FactsOfSession(kAccountOfSession);
    facts.linkAbove = R"(C:\FW)"; // the check file-rights warns of the link
    EXPECT_EQ(JudgeSession(facts).verdict, Verdict::kOk);
}

TEST(SessionCheck, Right_that_only_new_files_get_does_not_let_the_account_in)
{
    SessionFacts facts = FactsOfSession(kAccountOfSession);
    facts.logs.granted.back().onlyInherited = true;
    ExpectFinding(JudgeSession(facts), Verdict::kWarning, kMayNotWrite);
}

TEST(SessionCheck, Both_obstacles_are_told_the_logon_first)
{
    SessionFacts facts = FactsOfSession("S-1-5-21-1-2-3-1002");
    facts.logsOnByItself = false;
    const Finding finding = JudgeSession(facts);
    ExpectFinding(finding, Verdict::kWarning, std::string(kNobodyLogsOn) + "\n" + kMayNotWrite);
    EXPECT_EQ(finding.remedy, std::string(kNetplwiz) + "\n" + kGiveAccess);
}

TEST(SessionCheck, Folder_that_all_users_may_write_to_is_no_obstacle)
{
    for (const char* group : {"S-1-1-0", "S-1-5-11", "S-1-5-4", "S-1-5-32-545"}) {
        EXPECT_TRUE(ObstaclesOfSession(FactsOfSession(group)).empty()) << group;
    }
    SessionFacts open = FactsOfSession(kLocalSystem);
    open.logs.unprotected = true;
    EXPECT_TRUE(ObstaclesOfSession(open).empty());
}

TEST(SessionCheck, Account_that_has_the_rights_of_an_administrator_in_its_session_is_not_judged)
{
    SessionFacts facts = FactsOfSession(kLocalSystem);
    facts.isLimited = false;
    ExpectFinding(JudgeSession(facts), Verdict::kOk, R"(Windows logs PC\video on by itself)");
    facts = FactsOfSession(kLocalSystem);
    facts.logs = {};
    ExpectFinding(JudgeSession(facts), Verdict::kOk, R"(Windows logs PC\video on by itself)");
}

TEST(SessionCheck, Missing_folder_of_the_logs_will_let_in_the_noted_account_alone)
{
    SessionFacts facts = FactsOfSession(kAccountOfSession);
    facts.logs = {};
    facts.logs.path = R"(C:\FW\Logs)";
    facts.logs.error = 2;
    const Finding finding = JudgeSession(facts);
    ExpectFinding(finding, Verdict::kWarning,
                  R"(C:\FW\Logs does not exist yet. A guard with the rights of an administrator )"
                  R"(makes it for SYSTEM and administrators: PC\video may not write there, and at )"
                  "each later logon the guard ends (error 5)");
    EXPECT_EQ(finding.remedy,
              "As administrator:\n"
              R"(daemonctl rights --make logs --account S-1-5-21-1-2-3-1001 "C:\FW\Logs")"
              "\n"
              R"(reg add HKLM\SOFTWARE\Microsoft\Windows\CurrentVersion\Uninstall\DaemonManager )"
              "/v Account /d S-1-5-21-1-2-3-1001 /f");
    facts.notedSid = kAccountOfSession;
    ExpectFinding(JudgeSession(facts), Verdict::kOk, R"(Windows logs PC\video on by itself)");
    EXPECT_TRUE(ObstaclesOfSession(facts).empty());
}

TEST(SessionCheck, Rights_that_cannot_be_read_need_an_administrator)
{
    SessionFacts facts = FactsOfSession(kAccountOfSession);
    facts.logs.error = 5;
    const Finding finding = JudgeSession(facts);
    ExpectFinding(finding, Verdict::kWarning,
                  R"(the rights of C:\FW\Logs cannot be read (Windows error 5))");
    EXPECT_EQ(finding.remedy, "Run this command as administrator.");
}

TEST(SessionCheck, Folder_whose_name_cannot_be_pasted_is_in_no_command)
{
    SessionFacts facts = FactsOfSession(kLocalSystem);
    facts.logs.path = R"(C:\100%\Logs)";
    EXPECT_EQ(JudgeSession(facts).remedy,
              R"(Give PC\video full access to the folder: its properties, page Security.)");
}

} // namespace
} // namespace vqrx::test
