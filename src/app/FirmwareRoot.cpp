#include "FirmwareRoot.h"

#include "RootFromPathname.h"
#include "win32/UniqueHandle.h"

#include <windows.h>

#include <array>
#include <stdexcept>

namespace vqrx::app::v0 {
namespace {

using system::win32::v1::UniqueRegistryKey;

constexpr DWORD kMaxPathname = 255; // bytes, as the value's other readers take it

UniqueRegistryKey OpenKey(const char* name)
{
    UniqueRegistryKey key;
    RegOpenKeyExA(HKEY_LOCAL_MACHINE, name, 0, KEY_QUERY_VALUE, key.Put());
    return key; // empty if the key could not be opened
}

} // namespace

bool TryGetFirmwareRoot(std::string& path)
{
    path = R"(D:\FIRMWARE)";
    UniqueRegistryKey key = OpenKey(R"(SOFTWARE\UnitWarden\CurrentVersion\)");
    if (!key) {
        key = OpenKey(R"(SOFTWARE\VANTORO_QRX\CurrentVersion\)");
    }
    if (!key) {
        return false;
    }
    // One byte more than is asked for: a value may come back without its terminator.
    std::array<char, kMaxPathname + 1> buffer{};
    DWORD size = kMaxPathname;
    if (RegQueryValueExA(key.Get(), "Pathname", nullptr, nullptr,
                         reinterpret_cast<BYTE*>(buffer.data()), &size) != ERROR_SUCCESS) {
        return false;
    }
    path = RootFromPathname(buffer.data());
    return true;
}

void GetFirmwareRoot(std::string& path)
{
    if (!TryGetFirmwareRoot(path)) {
        throw std::runtime_error("could not get firmware root path");
    }
}

} // namespace vqrx::app::v0
