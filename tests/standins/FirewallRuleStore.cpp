#include "StandInFirewall.h"

#include "win32/UniqueHandle.h"

#include <cwchar>
#include <iterator>
#include <sstream>
#include <vector>

namespace vqrx::test {
namespace {

using system::win32::v1::UniqueRegistryKey;

constexpr const wchar_t* kRules = L"Software\\DaemonManagerTest\\FirewallRules";
constexpr const wchar_t* kDeeds = L"Software\\DaemonManagerTest\\FirewallDeeds";

UniqueRegistryKey OpenStore(const wchar_t* name)
{
    UniqueRegistryKey key;
    RegCreateKeyExW(HKEY_CURRENT_USER, name, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, key.Put(),
                    nullptr);
    return key;
}

// Returns the text values of a key by name.
std::map<std::wstring, std::wstring> ReadStore(const wchar_t* store)
{
    std::map<std::wstring, std::wstring> values;
    const UniqueRegistryKey key = OpenStore(store);
    for (DWORD index = 0;; ++index) {
        std::vector<wchar_t> name(16384);
        std::vector<wchar_t> data(16384);
        auto nameLength = static_cast<DWORD>(name.size());
        auto dataSize = static_cast<DWORD>(data.size() * sizeof(wchar_t));
        if (RegEnumValueW(key.Get(), index, name.data(), &nameLength, nullptr, nullptr,
                          reinterpret_cast<BYTE*>(data.data()), &dataSize) != ERROR_SUCCESS) {
            return values;
        }
        values[std::wstring(name.data(), nameLength)] = data.data();
    }
}

void WriteStore(const wchar_t* store, const std::wstring& name, const std::wstring& text)
{
    RegSetValueExW(OpenStore(store).Get(), name.c_str(), 0, REG_SZ,
                   reinterpret_cast<const BYTE*>(text.c_str()),
                   static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t)));
}

// Returns "protocol profiles action enabled application".
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
    for (const auto& [name, packed] : ReadStore(kRules)) {
        rules[name] = Unpack(packed);
    }
    return rules;
}

void StoreFirewallRule(const std::wstring& name, const FirewallRule& rule)
{
    WriteStore(kRules, name, Pack(rule));
}

bool EraseFirewallRule(const std::wstring& name)
{
    return RegDeleteValueW(OpenStore(kRules).Get(), name.c_str()) == ERROR_SUCCESS;
}

void EraseAllFirewallRules()
{
    RegDeleteTreeW(HKEY_CURRENT_USER, kRules);
    RegDeleteTreeW(HKEY_CURRENT_USER, kDeeds);
    RegDeleteKeyW(HKEY_CURRENT_USER, L"Software\\DaemonManagerTest");
}

std::vector<FirewallDeed> FirewallDeeds()
{
    std::vector<FirewallDeed> deeds;
    for (const auto& [number, packed] : ReadStore(kDeeds)) {
        FirewallDeed deed{};
        std::wistringstream text(packed);
        text >> deed.time;
        text.get();
        std::getline(text, deed.text);
        deeds.push_back(deed);
    }
    return deeds;
}

void NoteFirewallDeed(const std::wstring& text)
{
    FILETIME now{};
    GetSystemTimeAsFileTime(&now);
    const ULONGLONG time = (static_cast<ULONGLONG>(now.dwHighDateTime) << 32) | now.dwLowDateTime;
    // The number of allocations must not depend on the number of deeds, because tests count
    // allocations.
    DWORD count = 0;
    RegQueryInfoKeyW(OpenStore(kDeeds).Get(), nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                     &count, nullptr, nullptr, nullptr, nullptr);
    wchar_t number[16] = {};
    std::swprintf(number, std::size(number), L"%06lu", count);
    WriteStore(kDeeds, number, std::to_wstring(time) + L' ' + text);
}

} // namespace vqrx::test
