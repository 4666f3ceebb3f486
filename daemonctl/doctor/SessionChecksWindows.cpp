#include "SessionChecks.h"

#include "AccountNames.h"
#include "ObjectRights.h"
#include "ProtectedObjects.h"
#include "Utf8.h"
#include "daemon_manager/SupervisorIdentity.h"

#include <windows.h>

#include <array>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace vqrx::client::v0 {
namespace {

constexpr const wchar_t* kLogonKey = L"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\Winlogon";
constexpr const wchar_t* kLimitsKey =
    L"SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Policies\\System";

// Returns a text of the key of the logon, UTF-8; empty if there is none.
std::string LogonText(const wchar_t* value)
{
    std::array<wchar_t, 512> text{};
    auto size = static_cast<DWORD>(sizeof text);
    return RegGetValueW(HKEY_LOCAL_MACHINE, kLogonKey, value, RRF_RT_REG_SZ, nullptr, text.data(),
                        &size) == ERROR_SUCCESS
               ? Utf8(std::wstring_view(text.data()))
               : std::string();
}

// Returns whether Windows withholds the rights of administrators from their programs until somebody
// confirms them. It does unless it was told not to.
bool WithholdsRights()
{
    DWORD number = 1;
    DWORD size = sizeof number;
    return RegGetValueW(HKEY_LOCAL_MACHINE, kLimitsKey, L"EnableLUA", RRF_RT_REG_DWORD, nullptr,
                        &number, &size) != ERROR_SUCCESS ||
           number != 0;
}

void TakeAccountOfLogon(SessionFacts& facts)
{
    const std::string domain = LogonText(L"DefaultDomainName");
    facts.account = LogonText(L"DefaultUserName");
    if (!facts.account.empty() && !domain.empty() && domain != ".") {
        facts.account.insert(0, domain + "\\");
    }
    facts.accountSid = facts.account.empty() ? std::string() : SidOfAccount(facts.account);
}

// Returns the nearest folder above a path that is a junction or a link; empty if none is one.
std::string LinkAbove(const std::string& path)
{
    const std::vector<std::string> way = WayTo(path);
    for (std::size_t index = 1; index < way.size(); ++index) {
        if (ReadRights(way[index]).reparsePoint) {
            return way[index];
        }
    }
    return {};
}

} // namespace

SessionFacts GatherSessionFacts(const std::string& logFolder)
{
    constexpr const char* localSystem = "S-1-5-18";
    SessionFacts facts;
    facts.notedSid = Utf8(daemon_manager::IdentifySupervisor().notedAccount);
    facts.logsOnByItself = LogonText(L"AutoAdminLogon") == "1";
    if (facts.logsOnByItself) {
        TakeAccountOfLogon(facts);
    } else {
        facts.accountSid = facts.notedSid.empty() ? SidOfThisUser() : facts.notedSid;
        facts.account = NameOfAccount(facts.accountSid);
    }
    // The built-in administrator has the number 500 on every machine.
    facts.isLimited =
        facts.accountSid != localSystem && !facts.accountSid.ends_with("-500") && WithholdsRights();
    if (!logFolder.empty()) {
        facts.logs = ReadRights(logFolder);
        facts.linkAbove = LinkAbove(logFolder);
    }
    return facts;
}

} // namespace vqrx::client::v0
