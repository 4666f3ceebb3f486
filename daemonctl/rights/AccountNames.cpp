#include "AccountNames.h"

#include "Utf8.h"
#include "win32/LocalMemory.h"
#include "win32/UniqueHandle.h"

#include <sddl.h>

#include <array>
#include <cstddef>

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

std::string SidOfThisUser()
{
    system::win32::v1::UniqueKernelHandle token;
    std::array<std::byte, 256> buffer{};
    DWORD size = 0;
    if (OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, token.Put()) == FALSE ||
        GetTokenInformation(token.Get(), TokenUser, buffer.data(),
                            static_cast<DWORD>(buffer.size()), &size) == FALSE) {
        return {};
    }
    return SidText(reinterpret_cast<const TOKEN_USER*>(buffer.data())->User.Sid);
}

} // namespace vqrx::client::v0
