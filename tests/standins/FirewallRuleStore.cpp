#include "StandInFirewall.h"

#include "win32/UniqueHandle.h"

#include <sstream>
#include <vector>

namespace vqrx::test {
namespace {

using system::win32::v1::UniqueRegistryKey;

constexpr const wchar_t* kKey = L"Software\\DaemonManagerTest\\FirewallRules";

UniqueRegistryKey OpenStore()
{
    HKEY key = nullptr;
    RegCreateKeyExW(HKEY_CURRENT_USER, kKey, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key, nullptr);
    return UniqueRegistryKey(key);
}

// "protocol profiles action enabled application"
std::wstring Pack(const FirewallRule& rule)
{
    std::wostringstream text;
    text << rule.protocol << L' ' << rule.profiles << L' ' << rule.action << L' ' << rule.enabled
         << L' ' << rule.application;
    return text.str();
}

FirewallRule Unpack(const std::wstring& packed)
{
    FirewallRule rule;
    std::wistringstream text(packed);
    text >> rule.protocol >> rule.profiles >> rule.action >> rule.enabled;
    text.get();
    std::getline(text, rule.application);
    return rule;
}

} // namespace

std::map<std::wstring, FirewallRule> StoredFirewallRules()
{
    std::map<std::wstring, FirewallRule> rules;
    const UniqueRegistryKey key = OpenStore();
    for (DWORD index = 0;; ++index) {
        std::vector<wchar_t> name(16384);
        std::vector<wchar_t> data(16384);
        auto nameLength = static_cast<DWORD>(name.size());
        auto dataSize = static_cast<DWORD>(data.size() * sizeof(wchar_t));
        if (RegEnumValueW(key.Get(), index, name.data(), &nameLength, nullptr, nullptr,
                          reinterpret_cast<BYTE*>(data.data()), &dataSize) != ERROR_SUCCESS) {
            return rules;
        }
        rules[std::wstring(name.data(), nameLength)] = Unpack(data.data());
    }
}

void StoreFirewallRule(const std::wstring& name, const FirewallRule& rule)
{
    const std::wstring packed = Pack(rule);
    RegSetValueExW(OpenStore().Get(), name.c_str(), 0, REG_SZ,
                   reinterpret_cast<const BYTE*>(packed.c_str()),
                   static_cast<DWORD>((packed.size() + 1) * sizeof(wchar_t)));
}

bool EraseFirewallRule(const std::wstring& name)
{
    return RegDeleteValueW(OpenStore().Get(), name.c_str()) == ERROR_SUCCESS;
}

void EraseAllFirewallRules()
{
    RegDeleteTreeW(HKEY_CURRENT_USER, L"Software\\DaemonManagerTest");
}

} // namespace vqrx::test
