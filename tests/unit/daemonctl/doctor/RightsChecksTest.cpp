#include "RightsChecks.h"

#include "ExpectFinding.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

namespace vqrx::test {
namespace {

using namespace client::v0;
using Kind = ObjectRights::Kind;
using Role = PlaceFacts::Role;

constexpr const char* kVideo = "S-1-5-21-1-2-3-1001";

ObjectRights Sound(const std::string& path, Kind kind)
{
    ObjectRights rights;
    rights.path = path;
    rights.kind = kind;
    rights.ownerSid = "S-1-5-32-544";
    rights.ownerName = "Administrators";
    rights.granted = {{"S-1-5-18", "SYSTEM", 0x1F01FF}, {"S-1-5-32-545", "Users", 0x1200A9}};
    return rights;
}

ObjectRights Granting(ObjectRights rights, const std::string& sid, std::uint32_t mask)
{
    rights.granted.push_back({sid, sid, mask});
    return rights;
}

RightsFacts SoundMachine()
{
    RightsFacts facts;
    facts.administrators = {"S-1-5-18", "S-1-5-32-544"};
    facts.supervisorSid = kVideo;
    facts.places = {{Sound(R"(C:\)", Kind::kFolder), Role::kAbove},
                    {Sound(R"(C:\FW\App)", Kind::kFolder), Role::kPrograms},
                    {Sound(R"(C:\FW\Logs)", Kind::kFolder), Role::kLogs}};
    facts.keys = {Sound(R"(HKLM\SOFTWARE)", Kind::kRegistryKey),
                  Sound(R"(HKLM\SOFTWARE\UnitWarden)", Kind::kRegistryKey)};
    facts.places[2].rights.granted.pop_back();
    for (ObjectRights& key : facts.keys) {
        key.granted.pop_back(); // the numbers mean other rights there
    }
    return facts;
}

TEST(RightsCheck, Is_ok_if_only_administrators_can_change_what_is_there)
{
    RightsFacts facts = SoundMachine();
    ObjectRights missing = Sound(R"(C:\FW\Logs\DaemonManager.log)", Kind::kFile);
    missing.error = 2;
    facts.places.push_back({missing, Role::kLogFile});
    missing.error = 3;
    facts.keys.push_back(missing);
    ExpectFinding(JudgeFileRights(facts), Verdict::kOk,
                  "only administrators can change the 3 files and folders on which the supervisor "
                  "relies");
    ExpectFinding(JudgeKeyRights(facts), Verdict::kOk,
                  "only administrators can change the 2 registry keys on which the supervisor "
                  "relies");
}

TEST(RightsCheck, Lets_the_account_of_the_supervisor_write_the_log_and_no_program)
{
    RightsFacts facts = SoundMachine();
    facts.places[2].rights = Granting(facts.places[2].rights, kVideo, 0x1F01FF);
    EXPECT_EQ(JudgeFileRights(facts).verdict, Verdict::kOk);
    facts.places[2].rights.ownerSid = kVideo;
    EXPECT_EQ(JudgeFileRights(facts).verdict, Verdict::kOk);
    facts.places[1].rights = Granting(facts.places[1].rights, kVideo, 0x1F01FF);
    ExpectFinding(JudgeFileRights(facts), Verdict::kWarning,
                  "others than administrators can change 1 of 3 files and folders on which the "
                  "supervisor relies\n" +
                      std::string(kVideo) + R"( may write to C:\FW\App)");
}

// Whoever may read the log may lock it, and sees paths and arguments.
TEST(RightsCheck, Names_who_else_may_read_the_log)
{
    RightsFacts facts = SoundMachine();
    facts.places[1].rights = Granting(facts.places[1].rights, "S-1-1-0", 0x1200A9);
    EXPECT_EQ(JudgeFileRights(facts).verdict, Verdict::kOk);
    facts.places[2].rights = Granting(facts.places[2].rights, kVideo, 0x1F01FF);
    EXPECT_EQ(JudgeFileRights(facts).verdict, Verdict::kOk);
    facts.places[2].rights = Granting(facts.places[2].rights, "S-1-5-32-545", 0x1200A9);
    ObjectRights log = Sound(R"(C:\FW\Logs\DaemonManager.log)", Kind::kFile);
    facts.places.push_back({log, Role::kLogFile});
    const Finding finding = JudgeFileRights(facts);
    ExpectFinding(finding, Verdict::kWarning,
                  "others than administrators can read 2 of 4 files and folders on which the "
                  "supervisor relies\nS-1-5-32-545 may read C:\\FW\\Logs\n"
                  "Users may read C:\\FW\\Logs\\DaemonManager.log");
    EXPECT_EQ(finding.remedy,
              "As administrator, in this order:\n"
              "icacls \"C:\\FW\\Logs\" /inheritance:r /grant:r \"*S-1-5-18:(OI)(CI)F\" "
              "\"*S-1-5-32-544:(OI)(CI)F\" \"*S-1-5-21-1-2-3-1001:(OI)(CI)F\"\n"
              "icacls \"C:\\FW\\Logs\" /remove:g *S-1-5-32-545\n"
              "icacls \"C:\\FW\\Logs\\DaemonManager.log\" /reset");
    facts.places[1].rights = Granting(facts.places[1].rights, "S-1-5-7", 0x2);
    EXPECT_EQ(JudgeFileRights(facts).text.substr(0, 54),
              "others than administrators can change or read 3 of 4 f");
}

TEST(RightsCheck, Gives_commands_for_each_weak_place_in_the_order_of_the_places)
{
    RightsFacts facts = SoundMachine();
    facts.places[0].rights = Granting(facts.places[0].rights, "S-1-1-0", 0x40);
    facts.places[1].rights = Granting(facts.places[1].rights, "S-1-1-0", 0x2);
    facts.places[1].rights.ownerSid = "S-1-5-21-9";
    facts.places[1].rights.ownerName = R"(PC\guest)";
    const Finding finding = JudgeFileRights(facts);
    ExpectFinding(finding, Verdict::kWarning,
                  "others than administrators can change 2 of 3 files and folders on which the "
                  "supervisor relies\nS-1-1-0 may write to C:\\\nPC\\guest owns C:\\FW\\App\n"
                  "S-1-1-0 may write to C:\\FW\\App");
    EXPECT_EQ(finding.remedy,
              "As administrator, in this order:\n"
              "Let only administrators own and change C:\\: its properties, page Security.\n"
              "icacls \"C:\\FW\\App\" /setowner *S-1-5-32-544\n"
              "icacls \"C:\\FW\\App\" /inheritance:r /grant:r \"*S-1-5-18:(OI)(CI)F\" "
              "\"*S-1-5-32-544:(OI)(CI)F\" \"*S-1-5-32-545:(OI)(CI)RX\"\n"
              "icacls \"C:\\FW\\App\" /remove:g *S-1-1-0");
}

// The commands would change the rights of somebody else's folder, to which the link leads.
TEST(RightsCheck, Gives_no_commands_for_what_lies_behind_a_link)
{
    RightsFacts facts = SoundMachine();
    ObjectRights link = Sound(R"(C:\fw)", Kind::kFolder);
    link.reparsePoint = true;
    facts.places.insert(facts.places.begin() + 1, {link, Role::kAbove});
    facts.places[2].rights = Granting(facts.places[2].rights, "S-1-1-0", 0x1F01FF);
    ContentRights content;
    content.folder = R"(C:\FW\App)";
    content.weak = {Granting(Sound(R"(C:\FW\App\a.dll)", Kind::kFile), "S-1-1-0", 0x1F01FF)};
    facts.contents = {content};
    const Finding finding = JudgeFileRights(facts);
    EXPECT_EQ(finding.remedy, "As administrator, in this order:\n"
                              "Replace C:\\fw by a folder: somebody may turn the link elsewhere.");
    EXPECT_NE(finding.text.find("S-1-1-0 may write to C:\\FW\\App"), std::string::npos)
        << finding.text;
}

TEST(RightsCheck, Names_what_others_can_change_below_a_folder_of_programs_each_once)
{
    RightsFacts facts = SoundMachine();
    const auto open = [](const char* path, Kind kind) {
        return Granting(Sound(path, kind), "S-1-1-0", 0x42);
    };
    facts.places.push_back({open(R"(C:\FW\App\worker.exe)", Kind::kFile), Role::kProgram});
    facts.places.push_back({open(R"(C:\FW\App\bin)", Kind::kFolder), Role::kAbove});
    ContentRights content;
    content.folder = R"(C:\FW\App)";
    content.looked = 9;
    content.weak = {open(R"(C:\FW\App\WORKER.exe)", Kind::kFile),
                    open(R"(C:\FW\App\bin)", Kind::kFolder),
                    open(R"(C:\FW\App\bin\a.dll)", Kind::kFile)};
    content.further = 2;
    facts.contents = {content};
    const Finding finding = JudgeFileRights(facts);
    ExpectFinding(finding, Verdict::kWarning,
                  "others than administrators can change 5 of 12 files and folders on which the "
                  "supervisor relies\n"
                  "S-1-1-0 may write to C:\\FW\\App\\worker.exe\n"
                  "S-1-1-0 may write to C:\\FW\\App\\bin\n"
                  "S-1-1-0 may write to C:\\FW\\App\\bin\\a.dll\n"
                  "and 2 more below C:\\FW\\App");
    EXPECT_EQ(finding.remedy,
              "As administrator, in this order:\n"
              "icacls \"C:\\FW\\App\\worker.exe\" /reset\n"
              "icacls \"C:\\FW\\App\\bin\" /inheritance:r /grant:r \"*S-1-5-18:(OI)(CI)F\" "
              "\"*S-1-5-32-544:(OI)(CI)F\" \"*S-1-5-32-545:(OI)(CI)RX\"\n"
              "icacls \"C:\\FW\\App\\bin\" /remove:g *S-1-1-0\n"
              "icacls \"C:\\FW\\App\\bin\\a.dll\" /reset\n"
              "For the rest: daemonctl doctor");
}

TEST(RightsCheck, Says_that_a_folder_of_programs_holds_more_than_was_looked_at)
{
    RightsFacts facts = SoundMachine();
    ContentRights content;
    content.folder = R"(C:\FW\App)";
    content.looked = 7;
    content.complete = false;
    facts.contents = {content};
    ExpectFinding(JudgeFileRights(facts), Verdict::kOk,
                  "only administrators can change the 10 files and folders on which the supervisor "
                  "relies\nC:\\FW\\App holds more than the 7 files and folders that were looked "
                  "at: daemonctl rights --below looks at all");
}

TEST(RightsCheck, Proves_nothing_about_a_network)
{
    RightsFacts facts = SoundMachine();
    facts.unjudged = {R"(\\server\share\worker.exe)"};
    ExpectFinding(JudgeFileRights(facts), Verdict::kWarning,
                  "others than administrators can change 1 of 4 files and folders on which the "
                  "supervisor relies\n\\\\server\\share\\worker.exe lies on a network, or is no "
                  "path: its rights prove nothing");
}

TEST(RightsCheck, Gives_commands_for_the_keys_of_the_installation_only)
{
    RightsFacts facts = SoundMachine();
    for (ObjectRights& key : facts.keys) {
        key = Granting(key, "S-1-1-0", 0x2);
    }
    const Finding finding = JudgeKeyRights(facts);
    ExpectFinding(finding, Verdict::kWarning,
                  "others than administrators can change 2 of 2 registry keys on which the "
                  "supervisor relies\nS-1-1-0 may write to HKLM\\SOFTWARE\n"
                  "S-1-1-0 may write to HKLM\\SOFTWARE\\UnitWarden");
    EXPECT_EQ(finding.remedy,
              "In PowerShell, as administrator:\n"
              "HKLM\\SOFTWARE belongs to Windows: give it the rights that it has on another "
              "machine.\n"
              "$a = Get-Acl 'HKLM:\\SOFTWARE\\UnitWarden'; $a.SetSecurityDescriptorSddlForm("
              "'O:BAG:BAD:P(A;CI;KA;;;SY)(A;CI;KA;;;BA)(A;CI;KR;;;BU)'); Set-Acl "
              "'HKLM:\\SOFTWARE\\UnitWarden' $a");
}

} // namespace
} // namespace vqrx::test
