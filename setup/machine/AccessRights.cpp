#include "AccessRights.h"

#include "AccountNames.h"
#include "ObjectRights.h"
#include "win32/UniqueHandle.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <iterator>
#include <string_view>
#include <vector>

namespace vqrx::setup::v0 {
namespace {

using client::v0::SidText;
using system::win32::v1::UniqueKernelHandle;

constexpr const char* kSystemSid = "S-1-5-18";
constexpr const char* kAdministratorsSid = "S-1-5-32-544";

// One answer of GetTokenInformation; empty if Windows refuses it.
std::vector<std::byte> TokenInformation(HANDLE token, TOKEN_INFORMATION_CLASS kind)
{
    DWORD size = 0;
    GetTokenInformation(token, kind, nullptr, 0, &size);
    std::vector<std::byte> buffer(size);
    if (size == 0 || GetTokenInformation(token, kind, buffer.data(), size, &size) == FALSE) {
        buffer.clear();
    }
    return buffer;
}

template <typename Structure>
const Structure* In(const std::vector<std::byte>& buffer)
{
    return buffer.size() < sizeof(Structure) ? nullptr
                                             : reinterpret_cast<const Structure*>(buffer.data());
}

// Groups that Windows adds because of how a user logged on: a console, a batch job, a network, a
// remote desktop; and the number of the logon itself.
bool SaysHowUserLoggedOn(std::string_view sid)
{
    constexpr std::array<std::string_view, 8> kLogons{"S-1-5-1",  "S-1-5-2",  "S-1-5-3", "S-1-5-4",
                                                      "S-1-5-13", "S-1-5-14", "S-1-2-0", "S-1-2-1"};
    return std::find(kLogons.begin(), kLogons.end(), sid) != kLogons.end() ||
           sid.starts_with("S-1-5-5-") || sid.starts_with("S-1-18-");
}

// Adds the groups, sorted. @return whether the administrators are among them and may be used
bool AddGroups(const TOKEN_GROUPS& groups, std::string_view kind, std::string& details)
{
    bool administrator = false;
    std::vector<std::string> lines;
    for (DWORD index = 0; index < groups.GroupCount; ++index) {
        const SID_AND_ATTRIBUTES& group = groups.Groups[index];
        const std::string sid = SidText(group.Sid);
        const bool enabled = (group.Attributes & SE_GROUP_ENABLED) != 0;
        administrator = administrator || (enabled && sid == kAdministratorsSid);
        // The integrity level is among the groups of some tokens.
        if (!SaysHowUserLoggedOn(sid) && (group.Attributes & SE_GROUP_INTEGRITY) == 0) {
            lines.push_back(std::string(kind) + " " + sid + (enabled ? "" : " not enabled") + "\n");
        }
    }
    std::sort(lines.begin(), lines.end());
    for (const std::string& line : lines) {
        details += line;
    }
    return administrator;
}

void AddPrivileges(const TOKEN_PRIVILEGES& privileges, std::string& details)
{
    std::vector<DWORD> numbers;
    std::transform(privileges.Privileges, privileges.Privileges + privileges.PrivilegeCount,
                   std::back_inserter(numbers),
                   [](const LUID_AND_ATTRIBUTES& privilege) { return privilege.Luid.LowPart; });
    std::sort(numbers.begin(), numbers.end());
    for (const DWORD number : numbers) {
        details += "privilege " + std::to_string(number) + "\n";
    }
}

} // namespace

AccessRights RightsOfToken(HANDLE token)
{
    AccessRights rights;
    const auto user = TokenInformation(token, TokenUser);
    const auto groups = TokenInformation(token, TokenGroups);
    const auto restricting = TokenInformation(token, TokenRestrictedSids);
    const auto privileges = TokenInformation(token, TokenPrivileges);
    const auto level = TokenInformation(token, TokenIntegrityLevel);
    const auto session = TokenInformation(token, TokenSessionId);
    if (In<TOKEN_USER>(user) == nullptr || In<DWORD>(groups) == nullptr) {
        return rights;
    }
    rights.userSid = SidText(In<TOKEN_USER>(user)->User.Sid);
    rights.session = In<DWORD>(session) != nullptr ? *In<DWORD>(session) : 0;
    if (const auto* const label = In<TOKEN_MANDATORY_LABEL>(level)) {
        rights.details += "level " + SidText(label->Label.Sid) + "\n";
    }
    rights.administrator =
        AddGroups(*reinterpret_cast<const TOKEN_GROUPS*>(groups.data()), "group", rights.details) ||
        rights.userSid == kSystemSid;
    if (In<DWORD>(restricting) != nullptr) {
        AddGroups(*reinterpret_cast<const TOKEN_GROUPS*>(restricting.data()), "restricted to",
                  rights.details);
    }
    if (In<DWORD>(privileges) != nullptr) {
        AddPrivileges(*reinterpret_cast<const TOKEN_PRIVILEGES*>(privileges.data()),
                      rights.details);
    }
    return rights;
}

AccessRights RightsOfProcess(HANDLE process)
{
    UniqueKernelHandle token;
    return OpenProcessToken(process, TOKEN_QUERY, token.Put()) != FALSE ? RightsOfToken(token.Get())
                                                                        : AccessRights();
}

std::string NameOfRights(const AccessRights& rights)
{
    if (rights.userSid.empty()) {
        return "an unknown account";
    }
    return client::v0::NameOfAccount(rights.userSid) +
           (rights.administrator ? " (administrator)" : " (limited)");
}

} // namespace vqrx::setup::v0
