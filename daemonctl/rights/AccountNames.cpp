#include "AccountNames.h"

#include "Utf8.h"
#include "win32/LocalMemory.h"

#include <sddl.h>

#include <array>

namespace vqrx::client::v0 {

std::string SidText(PSID sid)
{
    wchar_t* text = nullptr;
    if (ConvertSidToStringSidW(sid, &text) == FALSE) {
        return {};
    }
    const system::win32::v1::UniqueLocalMemory<wchar_t> owner(text);
    return Utf8(text);
}

std::string NameOfSid(PSID sid)
{
    std::array<wchar_t, 256> name{};
    std::array<wchar_t, 256> domain{};
    auto nameSize = static_cast<DWORD>(name.size());
    auto domainSize = static_cast<DWORD>(domain.size());
    SID_NAME_USE use{};
    if (LookupAccountSidW(nullptr, sid, name.data(), &nameSize, domain.data(), &domainSize, &use) ==
        FALSE) {
        return SidText(sid);
    }
    const std::string domainText = Utf8(domain.data());
    return (domainText.empty() ? domainText : domainText + "\\") + Utf8(name.data());
}

} // namespace vqrx::client::v0
