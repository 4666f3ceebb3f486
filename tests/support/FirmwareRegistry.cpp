#include "FirmwareRegistry.h"

#include "win32/UniqueHandle.h"

#include <stdexcept>

namespace vqrx::test {
namespace {

using system::win32::v1::UniqueRegistryKey;

constexpr std::array<const char*, 2> kProducts = {R"(SOFTWARE\UnitWarden)",
                                                  R"(SOFTWARE\VANTORO_QRX)"};

std::string KeyName(FirmwareRegistry::Key key)
{
    return std::string(kProducts[key]) + R"(\CurrentVersion)";
}

UniqueRegistryKey Open(const std::string& name, REGSAM access)
{
    UniqueRegistryKey key;
    RegOpenKeyExA(HKEY_LOCAL_MACHINE, name.c_str(), 0, access, key.Put()); // null if it fails
    return key;
}

void Delete(FirmwareRegistry::Key key)
{
    RegDeleteKeyA(HKEY_LOCAL_MACHINE, KeyName(key).c_str());
}

} // namespace

FirmwareRegistry::FirmwareRegistry()
    : saved_{Save(kCurrent), Save(kOlder)}
{
    Delete(kCurrent);
    Delete(kOlder);
}

FirmwareRegistry::~FirmwareRegistry()
{
    Restore(kCurrent);
    Restore(kOlder);
}

FirmwareRegistry::Saved FirmwareRegistry::Save(Key key)
{
    Saved saved;
    saved.productExisted = static_cast<bool>(Open(kProducts[key], KEY_READ));
    const UniqueRegistryKey open = Open(KeyName(key), KEY_READ);
    saved.existed = static_cast<bool>(open);
    if (!open) {
        return saved;
    }
    Value value{0, std::string(4096, '\0')};
    auto size = static_cast<DWORD>(value.bytes.size());
    if (RegQueryValueExA(open.Get(), "Pathname", nullptr, &value.type,
                         reinterpret_cast<BYTE*>(value.bytes.data()), &size) == ERROR_SUCCESS) {
        value.bytes.resize(size);
        saved.pathname = value;
    }
    DWORD subKeys = 0;
    DWORD values = 0;
    RegQueryInfoKeyA(open.Get(), nullptr, nullptr, nullptr, &subKeys, nullptr, nullptr, &values,
                     nullptr, nullptr, nullptr, nullptr);
    if (subKeys != 0 || values > (saved.pathname ? 1U : 0U)) {
        throw std::runtime_error(
            KeyName(key) + " holds values or keys of an installation: the test does not change it");
    }
    return saved;
}

void FirmwareRegistry::Create(Key key)
{
    UniqueRegistryKey created;
    const LSTATUS status = RegCreateKeyExA(HKEY_LOCAL_MACHINE, KeyName(key).c_str(), 0, nullptr, 0,
                                           KEY_ALL_ACCESS, nullptr, created.Put(), nullptr);
    if (status != ERROR_SUCCESS) {
        throw std::runtime_error("cannot create the registry key " + KeyName(key) + ": " +
                                 std::to_string(status));
    }
}

void FirmwareRegistry::SetPathname(Key key, const std::string& value)
{
    SetPathname(key, REG_SZ, std::string(value.c_str(), value.size() + 1));
}

void FirmwareRegistry::SetPathname(Key key, DWORD type, const std::string& bytes)
{
    Create(key);
    const UniqueRegistryKey open = Open(KeyName(key), KEY_SET_VALUE);
    RegSetValueExA(open.Get(), "Pathname", 0, type, reinterpret_cast<const BYTE*>(bytes.data()),
                   static_cast<DWORD>(bytes.size()));
}

void FirmwareRegistry::Restore(Key key)
{
    const Saved& saved = saved_[key];
    Delete(key);
    if (!saved.productExisted) {
        RegDeleteKeyA(HKEY_LOCAL_MACHINE, kProducts[key]);
    }
    if (saved.pathname) {
        SetPathname(key, saved.pathname->type, saved.pathname->bytes);
    } else if (saved.existed) {
        Create(key);
    }
}

} // namespace vqrx::test
