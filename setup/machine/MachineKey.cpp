#include "MachineKey.h"

#include "SetupError.h"
#include "Utf8.h"
#include "daemon_manager/SupervisorIdentity.h"
#include "win32/UniqueHandle.h"

#include <windows.h>

#include <algorithm>
#include <cwchar>
#include <string_view>
#include <utility>

namespace vqrx::setup::v0 {
namespace {

using client::v0::Utf8;
using client::v0::Wide;
using system::win32::v1::UniqueRegistryKey;

std::wstring ReadValue(const std::string& path, const std::string& value, DWORD kinds)
{
    const std::wstring key = Wide(path);
    const std::wstring name = Wide(value);
    DWORD bytes = 0;
    if (RegGetValueW(HKEY_LOCAL_MACHINE, key.c_str(), name.c_str(), kinds, nullptr, nullptr,
                     &bytes) != ERROR_SUCCESS) {
        return {};
    }
    // Two zeros more than the value has: a list may lack its last ones.
    std::wstring text(bytes / sizeof(wchar_t) + 2, L'\0');
    bytes = static_cast<DWORD>(text.size() * sizeof(wchar_t));
    if (RegGetValueW(HKEY_LOCAL_MACHINE, key.c_str(), name.c_str(), kinds, nullptr, text.data(),
                     &bytes) != ERROR_SUCCESS) {
        return {};
    }
    return text;
}

} // namespace

bool MachineKey::Exists() const
{
    UniqueRegistryKey key;
    return RegOpenKeyExW(HKEY_LOCAL_MACHINE, Wide(path_).c_str(), 0, KEY_QUERY_VALUE, key.Put()) ==
           ERROR_SUCCESS;
}

std::string MachineKey::Text(const std::string& value) const
{
    return Utf8(ReadValue(path_, value, RRF_RT_REG_SZ).c_str());
}

std::vector<std::string> MachineKey::List(const std::string& value) const
{
    const std::wstring texts = ReadValue(path_, value, RRF_RT_REG_MULTI_SZ);
    std::vector<std::string> list;
    for (std::size_t at = 0; at < texts.size() && texts[at] != L'\0';) {
        const wchar_t* const text = &texts[at];
        list.push_back(Utf8(text));
        at += std::wcslen(text) + 1;
    }
    return list;
}

KeyValues MachineKey::Values() const
{
    constexpr DWORD longestName = 16384; // with its zero
    UniqueRegistryKey key;
    DWORD longestValue = 0;
    if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, Wide(path_).c_str(), 0, KEY_QUERY_VALUE, key.Put()) !=
            ERROR_SUCCESS ||
        RegQueryInfoKeyW(key.Get(), nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                         nullptr, &longestValue, nullptr, nullptr) != ERROR_SUCCESS) {
        return std::nullopt;
    }
    std::vector<KeyValue> values;
    for (DWORD index = 0;; ++index) {
        std::wstring name(longestName, L'\0');
        DWORD nameLength = longestName;
        KeyValue value;
        value.bytes.resize(longestValue);
        DWORD size = longestValue;
        if (RegEnumValueW(key.Get(), index, name.data(), &nameLength, nullptr, &value.type,
                          value.bytes.data(), &size) != ERROR_SUCCESS) {
            return values;
        }
        value.name = Utf8(std::wstring_view(name).substr(0, nameLength));
        value.bytes.resize(size);
        values.push_back(std::move(value));
    }
}

void MachineKey::Restore(const KeyValues& former) const
{
    if (!former) {
        Remove();
        return;
    }
    for (const KeyValue& present : Values().value_or(std::vector<KeyValue>())) {
        if (std::none_of(former->begin(), former->end(), [&present](const KeyValue& value) {
                return value.name == present.name;
            })) {
            RemoveValue(present.name);
        }
    }
    for (const KeyValue& value : *former) {
        Set(value.name, value.type, value.bytes.data(), value.bytes.size());
    }
}

void MachineKey::SetText(const std::string& value, const std::string& text) const
{
    const std::wstring wide = Wide(text);
    Set(value, REG_SZ, wide.c_str(), (wide.size() + 1) * sizeof(wchar_t));
}

void MachineKey::SetNumber(const std::string& value, std::uint32_t number) const
{
    Set(value, REG_DWORD, &number, sizeof number);
}

void MachineKey::SetList(const std::string& value, const std::vector<std::string>& texts) const
{
    std::wstring list;
    for (const std::string& text : texts) {
        list += Wide(text) + L'\0';
    }
    Set(value, REG_MULTI_SZ, list.c_str(), (list.size() + 1) * sizeof(wchar_t));
}

void MachineKey::Set(const std::string& value, unsigned long type, const void* data,
                     std::size_t bytes) const
{
    UniqueRegistryKey key;
    LONG error = RegCreateKeyExW(HKEY_LOCAL_MACHINE, Wide(path_).c_str(), 0, nullptr, 0,
                                 KEY_SET_VALUE, nullptr, key.Put(), nullptr);
    if (error == ERROR_SUCCESS) {
        error = RegSetValueExW(key.Get(), Wide(value).c_str(), 0, type,
                               static_cast<const BYTE*>(data), static_cast<DWORD>(bytes));
    }
    if (error != ERROR_SUCCESS) {
        throw SetupError("The registry key HKLM\\" + path_ + " cannot be written (Windows error " +
                         std::to_string(error) + ").");
    }
}

void MachineKey::RemoveValue(const std::string& value) const noexcept
{
    RegDeleteKeyValueW(HKEY_LOCAL_MACHINE, Wide(path_).c_str(), Wide(value).c_str());
}

void MachineKey::RemoveIfEmpty() const noexcept
{
    UniqueRegistryKey key;
    DWORD keys = 0;
    DWORD values = 0;
    if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, Wide(path_).c_str(), 0, KEY_QUERY_VALUE, key.Put()) ==
            ERROR_SUCCESS &&
        RegQueryInfoKeyW(key.Get(), nullptr, nullptr, nullptr, &keys, nullptr, nullptr, &values,
                         nullptr, nullptr, nullptr, nullptr) == ERROR_SUCCESS &&
        keys == 0 && values == 0) {
        Remove();
    }
}

void MachineKey::Remove() const noexcept
{
    RegDeleteKeyW(HKEY_LOCAL_MACHINE, Wide(path_).c_str());
}

MachineKey InstallationKey()
{
    return MachineKey(client::v0::Utf8(daemon_manager::kInstallerKey));
}

MachineKey EventSourceKey()
{
    return MachineKey(R"(SYSTEM\CurrentControlSet\Services\EventLog\Application\DaemonManager)");
}

} // namespace vqrx::setup::v0
