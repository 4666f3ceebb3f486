#include "SessionChecks.h"

#include "PasteableText.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <string_view>

namespace vqrx::client::v0 {
namespace {

// winerror.h and winnt.h, which a native build lacks.
constexpr std::uint32_t kNoFile = 2;
constexpr std::uint32_t kNoFolderOnWay = 3;
constexpr std::uint32_t kMayAddFiles = 0x00000002 | 0x10000000 | 0x40000000; // or generic rights

// A program that Windows starts at a logon has the rights of these groups, whoever logs on:
// everyone, authenticated users, interactive users, users. It has those of administrators only
// after somebody has confirmed it.
constexpr std::array<std::string_view, 4> kGroupsOfEachUser = {"S-1-1-0", "S-1-5-11", "S-1-5-4",
                                                               "S-1-5-32-545"};

constexpr const char* kSetUpLogon =
    "As administrator: netplwiz. It asks for the password, which must not stand in a command line: "
    "docs/unattended.md, \"Automatic logon\".";

bool DoesNotExist(const ObjectRights& rights)
{
    return rights.error == kNoFile || rights.error == kNoFolderOnWay;
}

bool MayWriteTo(const ObjectRights& folder, const std::string& accountSid)
{
    if (folder.unprotected) {
        return true;
    }
    return std::any_of(
        folder.granted.begin(), folder.granted.end(), [&](const GrantedRight& right) {
            const bool isOfAccount = right.sid == accountSid ||
                                     std::find(kGroupsOfEachUser.begin(), kGroupsOfEachUser.end(),
                                               right.sid) != kGroupsOfEachUser.end();
            return isOfAccount && !right.onlyInherited && (right.mask & kMayAddFiles) != 0;
        });
}

std::string ReplacementOf(const std::string& link)
{
    return "Replace " + link + " by a folder: somebody may turn the link elsewhere.";
}

std::string AboutLinkAbove(const SessionFacts& facts)
{
    return facts.linkAbove.empty() ? "" : "\n" + facts.linkAbove + " is a junction or a link";
}

// Also notes the account: otherwise the log would count as one that a stranger may change.
std::vector<std::string> RemedyForLogs(const SessionFacts& facts)
{
    if (!facts.linkAbove.empty()) {
        return {ReplacementOf(facts.linkAbove)};
    }
    const std::string path = QuotedForPasting(facts.logs.path);
    if (path.empty()) { // its name would do something else when it is pasted
        return {"Give " + facts.account +
                " full access to the folder: its properties, page "
                "Security."};
    }
    const std::string give =
        DoesNotExist(facts.logs)
            ? "daemonctl rights --make logs --account " + facts.accountSid + " " + path
            : "icacls " + path + " /grant \"*" + facts.accountSid + ":(OI)(CI)F\"";
    return {"As administrator:", give,
            R"(reg add HKLM\SOFTWARE\Microsoft\Windows\CurrentVersion\Uninstall\DaemonManager)"
            " /v Account /d " +
                facts.accountSid + " /f"};
}

// @param found  gets the obstacle, if there is one
void AddObstacleOfLogs(const SessionFacts& facts, std::vector<SessionObstacle>& found)
{
    const ObjectRights& logs = facts.logs;
    if (logs.path.empty() || facts.accountSid.empty() || !facts.isLimited) {
        return;
    }
    if (DoesNotExist(logs)) {
        if (facts.accountSid != facts.notedSid) {
            found.push_back({logs.path +
                                 " does not exist yet. A guard with the rights of an "
                                 "administrator makes it for SYSTEM and administrators: " +
                                 facts.account +
                                 " may not write there, and at each later logon the guard ends "
                                 "(error 5)" +
                                 AboutLinkAbove(facts),
                             RemedyForLogs(facts)});
        }
        return;
    }
    if (logs.error != 0) {
        found.push_back({"the rights of " + logs.path + " cannot be read (Windows error " +
                             std::to_string(logs.error) + ")",
                         {"Run this command as administrator."}});
        return;
    }
    if (logs.reparsePoint) {
        found.push_back({logs.path + " is a junction or a link", {ReplacementOf(logs.path)}});
        return;
    }
    if (!MayWriteTo(logs, facts.accountSid)) {
        found.push_back({"the rights of " + logs.path + " let neither " + facts.account +
                             " nor all users write there: the guard of the session ends at each "
                             "logon (error 5)" +
                             AboutLinkAbove(facts),
                         RemedyForLogs(facts)});
    }
}

} // namespace

std::vector<SessionObstacle> ObstaclesOfSession(const SessionFacts& facts)
{
    std::vector<SessionObstacle> found;
    if (!facts.logsOnByItself) {
        found.push_back({"Windows logs no user on by itself (AutoAdminLogon is not 1): after "
                         "power-on nothing starts until somebody logs on",
                         {kSetUpLogon}});
    } else if (facts.accountSid.empty()) {
        found.push_back({"Windows does not find the account that it is to log on by itself: " +
                             (facts.account.empty() ? "none is named" : facts.account),
                         {kSetUpLogon}});
    }
    AddObstacleOfLogs(facts, found);
    return found;
}

Finding JudgeSession(const SessionFacts& facts)
{
    constexpr const char* check = "session";
    std::string text;
    std::string remedy;
    for (const SessionObstacle& obstacle : ObstaclesOfSession(facts)) {
        text += (text.empty() ? "" : "\n") + obstacle.text;
        for (const std::string& line : obstacle.remedy) {
            remedy += (remedy.empty() ? "" : "\n") + line;
        }
    }
    if (!text.empty()) {
        return Warning(check, text, remedy);
    }
    return Ok(check, "Windows logs " + facts.account + " on by itself" +
                         (facts.logs.path.empty() || !facts.isLimited || DoesNotExist(facts.logs)
                              ? ""
                              : ", and this account may write to " + facts.logs.path));
}

} // namespace vqrx::client::v0
