#include "AccessRights.h"

#include "ImportPatch.h"
#include "LimitedToken.h"

#include <windows.h>

#include <sddl.h>

#include <gtest/gtest.h>

#include <string>

namespace vqrx::test {
namespace {

using setup::v0::AccessRights;
using setup::v0::NameOfRights;
using setup::v0::RightsOfProcess;
using setup::v0::RightsOfToken;

BOOL(WINAPI* toSid)(LPCWSTR, PSID*);

// Wine takes an empty text for a SID, if what follows the text in memory looks like one.
BOOL WINAPI TakeEmptyTextForSid(LPCWSTR text, PSID* sid)
{
    return toSid(*text == L'\0' ? L"S-1-0-0" : text, sid);
}

TEST(AccessRights, Two_looks_at_one_process_are_equal)
{
    const AccessRights rights = RightsOfProcess(GetCurrentProcess());
    EXPECT_EQ(rights, RightsOfProcess(GetCurrentProcess()));
    EXPECT_EQ(0U, rights.userSid.rfind("S-1-5-", 0)) << rights.userSid;
    EXPECT_TRUE(rights.administrator);
    EXPECT_NE(rights.details.find("group S-1-5-32-544\n"), std::string::npos) << rights.details;
    EXPECT_NE(rights.details.find("privilege "), std::string::npos) << rights.details;
    EXPECT_NE(NameOfRights(rights).find(" (administrator)"), std::string::npos);
}

TEST(AccessRights, The_token_of_an_administrator_without_his_rights_differs)
{
    const AccessRights own = RightsOfProcess(GetCurrentProcess());
    const AccessRights less = RightsOfToken(LimitedToken().Get());
    EXPECT_EQ(own.userSid, less.userSid);
    EXPECT_FALSE(less.administrator);
    EXPECT_NE(less.details.find("group S-1-5-32-544 not enabled\n"), std::string::npos)
        << less.details;
    EXPECT_NE(own.details.find("privilege 20\n"), std::string::npos) << own.details;
    EXPECT_EQ(less.details.find("privilege 20\n"), std::string::npos) << less.details;
    EXPECT_FALSE(own == less);
    EXPECT_NE(NameOfRights(less).find(" (limited)"), std::string::npos);
}

TEST(AccessRights, Another_session_differs)
{
    AccessRights rights = RightsOfProcess(GetCurrentProcess());
    const AccessRights own = rights;
    ++rights.session;
    EXPECT_FALSE(own == rights);
}

TEST(AccessRights, Rights_that_cannot_be_read_are_empty_and_have_no_name)
{
    const ImportPatch patch("ConvertStringSidToSidW", TakeEmptyTextForSid, toSid);
    const AccessRights none = RightsOfProcess(nullptr);
    EXPECT_EQ("", none.userSid);
    EXPECT_FALSE(none.administrator);
    EXPECT_EQ("an unknown account", NameOfRights(none));
}

} // namespace
} // namespace vqrx::test
