#include "AccountNames.h"

#include "win32/LocalMemory.h"

#include <sddl.h>

#include <gtest/gtest.h>

#include <string>

namespace vqrx::test {
namespace {

using client::v0::NameOfSid;
using client::v0::SidText;

system::win32::v1::UniqueLocalMemory<void> MakeSid(const wchar_t* text)
{
    PSID sid = nullptr;
    EXPECT_NE(FALSE, ConvertStringSidToSidW(text, &sid));
    return system::win32::v1::UniqueLocalMemory<void>(sid);
}

TEST(AccountNames, A_SID_becomes_its_text)
{
    EXPECT_EQ("S-1-5-18", SidText(MakeSid(L"S-1-5-18").get()));
}

TEST(AccountNames, What_is_no_SID_becomes_an_empty_text)
{
    SID none{}; // revision 0
    EXPECT_EQ("", SidText(&none));
}

TEST(AccountNames, An_account_has_its_name_and_a_SID_without_account_its_text)
{
    // Windows names the account in its own language: "NT AUTHORITY\SYSTEM", "AUTORITE NT\Système".
    EXPECT_NE(std::string::npos, NameOfSid(MakeSid(L"S-1-5-18").get()).find('\\'));
    EXPECT_EQ("S-1-5-21-1-2-3-4", NameOfSid(MakeSid(L"S-1-5-21-1-2-3-4").get()));
}

} // namespace
} // namespace vqrx::test
