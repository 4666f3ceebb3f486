#include "RegistryContent.h"

#include "Utf8.h"
#include "win32/UniqueHandle.h"

#include <windows.h>

#include <algorithm>

namespace vqrx::kit {
namespace {

using client::v0::Utf8;
using client::v0::Wide;
using system::win32::v1::UniqueRegistryKey;

constexpr DWORD kLongestName = 16384; // characters, the documented limit of a value's name

HKEY RootOf(const WatchedKey& key)
{
    return key.ofMachine ? HKEY_LOCAL_MACHINE : HKEY_CURRENT_USER;
}

UniqueRegistryKey Open(HKEY parent, const std::string& path, REGSAM access)
{
    UniqueRegistryKey key;
    RegOpenKeyExW(parent, Wide(path).c_str(), 0, access, key.Put()); // empty if it fails
    return key;
}

std::vector<RegistryValue> ReadValues(HKEY key)
{
    std::vector<RegistryValue> values;
    std::wstring name(kLongestName, L'\0');
    DWORD largest = 0;
    RegQueryInfoKeyW(key, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                     &largest, nullptr, nullptr);
    for (DWORD index = 0;; ++index) {
        std::vector<std::uint8_t> bytes(largest);
        DWORD length = kLongestName;
        DWORD size = largest;
        DWORD type = 0;
        if (RegEnumValueW(key, index, name.data(), &length, nullptr, &type, bytes.data(), &size) !=
            ERROR_SUCCESS) {
            break;
        }
        bytes.resize(size);
        values.push_back({Utf8(std::wstring_view(name).substr(0, length)), type, bytes});
    }
    std::sort(values.begin(), values.end(),
              [](const auto& left, const auto& right) { return left.name < right.name; });
    return values;
}

std::vector<std::string> NamesBelow(HKEY key)
{
    std::vector<std::string> names;
    wchar_t name[256] = {};
    for (DWORD index = 0;; ++index) {
        DWORD length = 256;
        if (RegEnumKeyExW(key, index, name, &length, nullptr, nullptr, nullptr, nullptr) !=
            ERROR_SUCCESS) {
            break;
        }
        names.push_back(Utf8(std::wstring_view(name, length)));
    }
    std::sort(names.begin(), names.end());
    return names;
}

RegistryTree ReadTree(HKEY parent, const std::string& path, bool withKeysBelow)
{
    RegistryTree tree;
    const UniqueRegistryKey key = Open(parent, path, KEY_READ);
    if (!key) {
        return tree;
    }
    tree.exists = true;
    tree.values = ReadValues(key.Get());
    if (withKeysBelow) {
        for (const std::string& name : NamesBelow(key.Get())) {
            tree.keys.emplace_back(name, ReadTree(key.Get(), name, true));
        }
    }
    return tree;
}

void Remove(HKEY parent, const std::string& path)
{
    RegDeleteTreeW(parent, Wide(path).c_str());
    RegDeleteKeyW(parent, Wide(path).c_str()); // Wine 8 leaves the key itself
}

// Values that are as wanted stay untouched: a key of Windows must not lose them for a moment.
void WriteValues(HKEY key, const std::vector<RegistryValue>& wanted)
{
    const std::vector<RegistryValue> present = ReadValues(key);
    for (const RegistryValue& value : present) {
        if (std::none_of(wanted.begin(), wanted.end(),
                         [&](const auto& other) { return other.name == value.name; })) {
            RegDeleteValueW(key, Wide(value.name).c_str());
        }
    }
    for (const RegistryValue& value : wanted) {
        if (std::find(present.begin(), present.end(), value) == present.end()) {
            RegSetValueExW(key, Wide(value.name).c_str(), 0, value.type, value.bytes.data(),
                           static_cast<DWORD>(value.bytes.size()));
        }
    }
}

void WriteTree(HKEY parent, const std::string& path, const RegistryTree& wanted, bool withKeysBelow)
{
    if (ReadTree(parent, path, withKeysBelow) == wanted) {
        return; // the key may belong to Windows: do not open it for writing without need
    }
    if (!wanted.exists) {
        Remove(parent, path);
        return;
    }
    UniqueRegistryKey key;
    RegCreateKeyExW(parent, Wide(path).c_str(), 0, nullptr, 0, KEY_READ | KEY_WRITE, nullptr,
                    key.Put(), nullptr);
    if (!key) {
        return;
    }
    WriteValues(key.Get(), wanted.values);
    if (!withKeysBelow) {
        return;
    }
    for (const std::string& name : NamesBelow(key.Get())) {
        if (std::none_of(wanted.keys.begin(), wanted.keys.end(),
                         [&](const auto& below) { return below.first == name; })) {
            Remove(key.Get(), name);
        }
    }
    for (const auto& [name, below] : wanted.keys) {
        WriteTree(key.Get(), name, below, true);
    }
}

} // namespace

RegistryTree ReadContent(const WatchedKey& key)
{
    return ReadTree(RootOf(key), key.path, key.withKeysBelow);
}

bool RestoreContent(const SavedKey& saved)
{
    const WatchedKey& key = saved.key;
    if (!key.withKeysBelow && !saved.before.exists) {
        // Keys below it are not watched: the key must stay for them.
        RegistryTree empty;
        empty.exists = true;
        if (ReadContent(key).exists) {
            WriteTree(RootOf(key), key.path, empty, false);
            RegDeleteKeyW(RootOf(key), Wide(key.path).c_str()); // fails if there are keys below it
        }
        return ReadContent(key).values.empty();
    }
    WriteTree(RootOf(key), key.path, saved.before, key.withKeysBelow);
    return ReadContent(key) == saved.before;
}

} // namespace vqrx::kit
