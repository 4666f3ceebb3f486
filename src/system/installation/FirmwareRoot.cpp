#include "installation/FirmwareRoot.h"

#include "installation/InstallationPaths.h"
#include "win32/UniqueHandle.h"

#include <windows.h>

#include <array>
#include <stdexcept>

namespace vqrx::system::installation::v1 {
namespace {

constexpr DWORD kMaxPathname = 255; // bytes, the limit of every program that reads the value

const char* PathOf(RootKey key)
{
    return key == RootKey::kCurrent ? R"(SOFTWARE\UnitWarden\CurrentVersion\)"
                                    : R"(SOFTWARE\VANTORO_QRX\CurrentVersion\)";
}

} // namespace

std::string NameOf(RootKey key)
{
    std::string name = std::string("HKLM\\") + PathOf(key);
    name.pop_back(); // the separator at the end
    return name;
}

RegisteredPathname ReadPathname(RootKey key)
{
    RegisteredPathname result;
    win32::v1::UniqueRegistryKey opened;
    result.openError = static_cast<std::uint32_t>(
        RegOpenKeyExA(HKEY_LOCAL_MACHINE, PathOf(key), 0, KEY_QUERY_VALUE, opened.Put()));
    if (result.openError != ERROR_SUCCESS) {
        return result;
    }
    // One byte more than the call may fill: a value can lack its terminator.
    std::array<char, kMaxPathname + 1> buffer{};
    DWORD size = kMaxPathname;
    result.valueError = static_cast<std::uint32_t>(RegQueryValueExA(
        opened.Get(), "Pathname", nullptr, nullptr, reinterpret_cast<BYTE*>(buffer.data()), &size));
    if (result.valueError == ERROR_SUCCESS) {
        result.pathname = buffer.data();
    }
    return result;
}

bool TryGetFirmwareRoot(std::string& path)
{
    path = R"(D:\FIRMWARE)";
    RegisteredPathname value = ReadPathname(RootKey::kCurrent);
    if (value.openError != ERROR_SUCCESS) {
        value = ReadPathname(RootKey::kOlder);
    }
    if (value.openError != ERROR_SUCCESS || value.valueError != ERROR_SUCCESS) {
        return false;
    }
    path = RootFromPathname(value.pathname);
    return true;
}

void GetFirmwareRoot(std::string& path)
{
    if (!TryGetFirmwareRoot(path)) {
        throw std::runtime_error("could not get firmware root path");
    }
}

} // namespace vqrx::system::installation::v1
