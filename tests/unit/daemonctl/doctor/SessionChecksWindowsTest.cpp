// The settings of the automatic logon come from a patch: a test must not change how the machine
// logs people on.
#include "SessionChecks.h"

#include "AccountNames.h"
#include "ImportPatch.h"
#include "ObjectRights.h"
#include "ProtectedObjects.h"
#include "TempFolder.h"
#include "Wine.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <cwchar>
#include <map>
#include <string>

namespace vqrx::test {
namespace {

using namespace client::v0;

// Texts of the registry by the name of the value; a value that is not here does not exist.
std::map<std::wstring, std::wstring> settings;
DWORD enableLua = 1;

LSTATUS WINAPI AnswerFromSettings(HKEY, LPCWSTR, LPCWSTR value, DWORD, LPDWORD, PVOID data,
                                  LPDWORD size)
{
    const std::wstring name = value != nullptr ? value : L"";
    if (name == L"EnableLUA") {
        *static_cast<DWORD*>(data) = enableLua;
        return ERROR_SUCCESS;
    }
    const auto found = settings.find(name);
    if (found == settings.end()) {
        return ERROR_FILE_NOT_FOUND;
    }
    const std::wstring& text = found->second;
    EXPECT_LT(text.size() * sizeof(wchar_t), *size);
    std::wcscpy(static_cast<wchar_t*>(data), text.c_str());
    return ERROR_SUCCESS;
}

class SessionFactsTest : public ::testing::Test {
protected:
    SessionFactsTest()
    {
        settings.clear();
        enableLua = 1;
    }

    const std::string system_ = NameOfAccount("S-1-5-18"); // "NT AUTHORITY\SYSTEM"
    const ImportPatch patch_{"RegGetValueW", AnswerFromSettings};
};

std::wstring WideName(const std::string& name)
{
    return {name.begin(), name.end()};
}

TEST_F(SessionFactsTest, Without_an_automatic_logon_it_is_the_noted_account_or_this_user)
{
    SessionFacts facts = GatherSessionFacts("");
    EXPECT_FALSE(facts.logsOnByItself);
    EXPECT_EQ(facts.accountSid, SidOfThisUser());
    EXPECT_NE(facts.accountSid, "");
    EXPECT_EQ(facts.account, NameOfAccount(SidOfThisUser()));
    EXPECT_EQ(facts.logs.path, "");
    settings[L"Account"] = L"S-1-5-21-1-2-3-1001";
    settings[L"AutoAdminLogon"] = L"0";
    facts = GatherSessionFacts("");
    EXPECT_FALSE(facts.logsOnByItself);
    EXPECT_EQ(facts.accountSid, "S-1-5-21-1-2-3-1001");
    EXPECT_EQ(facts.notedSid, "S-1-5-21-1-2-3-1001");
    EXPECT_TRUE(facts.isLimited);
}

TEST_F(SessionFactsTest, Account_of_the_automatic_logon_is_found_by_its_name)
{
    const std::wstring name = WideName(system_);
    const std::size_t end = name.find(L'\\');
    ASSERT_NE(end, std::wstring::npos);
    settings[L"AutoAdminLogon"] = L"1";
    settings[L"DefaultDomainName"] = name.substr(0, end);
    settings[L"DefaultUserName"] = name.substr(end + 1);
    SessionFacts facts = GatherSessionFacts("");
    EXPECT_TRUE(facts.logsOnByItself);
    EXPECT_EQ(facts.account, system_);
    EXPECT_EQ(facts.accountSid, "S-1-5-18");
    EXPECT_FALSE(facts.isLimited);
    settings[L"DefaultDomainName"] = L".";
    EXPECT_EQ(GatherSessionFacts("").accountSid, "S-1-5-18");
    settings[L"DefaultUserName"] = L"nobody has this name";
    facts = GatherSessionFacts("");
    EXPECT_EQ(facts.account, "nobody has this name");
    EXPECT_EQ(facts.accountSid, "");
}

TEST_F(SessionFactsTest, Built_in_administrator_and_a_machine_without_limits_are_not_limited)
{
    settings[L"Account"] = L"S-1-5-21-1-2-3-500";
    EXPECT_FALSE(GatherSessionFacts("").isLimited);
    settings[L"Account"] = L"S-1-5-21-1-2-3-1001";
    enableLua = 0;
    EXPECT_FALSE(GatherSessionFacts("").isLimited);
}

TEST_F(SessionFactsTest, Rights_of_the_folder_of_the_logs_are_read)
{
    const TempFolder folder;
    const std::string logs = folder.File("Logs");
    EXPECT_EQ(GatherSessionFacts(logs).logs.error, DWORD{ERROR_FILE_NOT_FOUND});
    ASSERT_EQ(MakeProtectedFolder(logs, FolderUse::kLogs, SidOfThisUser()), 0U);
    const SessionFacts facts = GatherSessionFacts(logs);
    EXPECT_EQ(facts.logs.path, logs);
    EXPECT_EQ(facts.logs.error, 0U);
    for (const SessionObstacle& obstacle : ObstaclesOfSession(facts)) {
        EXPECT_EQ(obstacle.text.find("the rights of"), std::string::npos) << obstacle.text;
    }
}

TEST_F(SessionFactsTest, Link_above_the_folder_of_the_logs_is_found)
{
    // Drive Z: of Wine is a link to the root of the host. Windows has a junction of this name.
    const std::string link = RunsUnderWine() ? "Z:\\" : "C:\\Documents and Settings";
    const std::string above = RunsUnderWine() ? "Z:\\usr" : link + "\\Public";
    EXPECT_EQ(GatherSessionFacts(above + "\\Logs").linkAbove, link);
    const TempFolder folder;
    EXPECT_EQ(GatherSessionFacts(folder.File("Logs")).linkAbove, "");
    EXPECT_EQ(GatherSessionFacts("").linkAbove, "");
}

} // namespace
} // namespace vqrx::test
