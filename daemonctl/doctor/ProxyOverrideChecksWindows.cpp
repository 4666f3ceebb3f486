#include "ProxyOverrideChecks.h"

#include "IDaemonMgrControl.h"
#include "ObjectRights.h"
#include "Utf8.h"
#include "win32/UniqueHandle.h"

#include <windows.h>

#include <array>

namespace vqrx::client::v0 {
namespace {

using system::win32::v1::UniqueRegistryKey;

std::wstring IdText(const GUID& id)
{
    std::array<wchar_t, 40> text{};
    StringFromGUID2(id, text.data(), static_cast<int>(text.size()));
    return text.data();
}

// Adds the key if it exists, also if this user may not read it.
void AddIfThere(const std::wstring& key, const wchar_t* subkey, const std::wstring& sid,
                std::vector<ProxyOverride>& found)
{
    UniqueRegistryKey opened;
    const LSTATUS result = RegOpenKeyExW(HKEY_USERS, key.c_str(), 0, KEY_QUERY_VALUE, opened.Put());
    if (result != ERROR_SUCCESS && result != ERROR_ACCESS_DENIED) {
        return;
    }
    std::array<wchar_t, 1024> text{};
    auto size = static_cast<DWORD>(text.size() * sizeof(wchar_t));
    const bool isRead = RegGetValueW(HKEY_USERS, (key + subkey).c_str(), nullptr, RRF_RT_REG_SZ,
                                     nullptr, text.data(), &size) == ERROR_SUCCESS;
    found.push_back(
        {"HKU\\" + Utf8(key), NameOfAccount(Utf8(sid)), isRead ? Utf8(text.data()) : ""});
}

void AddOverridesOf(const std::wstring& classes, const std::wstring& sid,
                    std::vector<ProxyOverride>& found)
{
    const std::wstring id = IdText(IID_IDaemonMgrControl);
    AddIfThere(classes + L"\\CLSID\\" + id, L"\\InProcServer32", sid, found);
    AddIfThere(classes + L"\\Interface\\" + id, L"\\ProxyStubClsid32", sid, found);
}

} // namespace

ProxyOverrideFacts GatherProxyOverrides()
{
    ProxyOverrideFacts facts;
    std::array<wchar_t, 256> name{};
    for (DWORD index = 0;; ++index) {
        auto size = static_cast<DWORD>(name.size());
        const LSTATUS result = RegEnumKeyExW(HKEY_USERS, index, name.data(), &size, nullptr,
                                             nullptr, nullptr, nullptr);
        if (result != ERROR_SUCCESS) {
            facts.error = result == ERROR_NO_MORE_ITEMS ? 0 : static_cast<std::uint32_t>(result);
            return facts;
        }
        // Windows keeps the classes of a user in a key of their own; "Software\Classes" is a link
        // to it, which shows the registrations again.
        const std::wstring user(name.data(), size);
        if (!user.ends_with(L"_Classes")) {
            AddOverridesOf(user + L"\\Software\\Classes", user, facts.found);
            // Those of 32-bit programs.
            AddOverridesOf(user + L"\\Software\\Classes\\Wow6432Node", user, facts.found);
        }
    }
}

} // namespace vqrx::client::v0
