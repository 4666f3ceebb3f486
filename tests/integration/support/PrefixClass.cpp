#include "PrefixClass.h"

#include "WbemLocator.h"

#include "ChildProcess.h"
#include "HostRefusal.h"
#include "HostWmi.h"
#include "StandInFirewall.h"
#include "code_page/CodePage.h"
#include "win32/UniqueHandle.h"

#include <objbase.h>

#include <optional>
#include <stdexcept>

namespace vqrx::test {
namespace {

using system::win32::v1::UniqueRegistryKey;

constexpr const wchar_t* kHostLibrary = L"HostLibrary";
constexpr CLSID kFirewallClasses[] = {
    {0x304CE942, 0x6E39, 0x40D8, {0x94, 0x3A, 0xB9, 0x13, 0xC4, 0x0C, 0x9C, 0xD4}},
    {0xE2B3C97F, 0x6AE1, 0x41AC, {0x81, 0x7A, 0xF6, 0xF9, 0x21, 0x66, 0xD7, 0xDD}},
    {0x2C5BC43E, 0x3369, 0x4C33, {0xAB, 0x0C, 0xBE, 0x94, 0x69, 0x67, 0x7A, 0xF4}}};

UniqueRegistryKey Open(const std::wstring& name)
{
    UniqueRegistryKey key;
    const LSTATUS status = RegOpenKeyExW(HKEY_LOCAL_MACHINE, name.c_str(), 0,
                                         KEY_QUERY_VALUE | KEY_SET_VALUE, key.Put());
    if (status == ERROR_ACCESS_DENIED) {
        throw HostRefusal("it does not let its COM classes be replaced");
    }
    if (status != ERROR_SUCCESS) {
        throw std::runtime_error("cannot open a COM class: " + std::to_string(status));
    }
    return key;
}

std::optional<std::wstring> Read(const UniqueRegistryKey& key, const wchar_t* value)
{
    wchar_t text[1024] = {};
    DWORD size = sizeof text;
    if (RegGetValueW(key.Get(), nullptr, value, RRF_RT_REG_SZ | RRF_RT_REG_EXPAND_SZ | RRF_NOEXPAND,
                     nullptr, text, &size) != ERROR_SUCCESS) {
        return std::nullopt;
    }
    return std::wstring(text);
}

LSTATUS Write(const UniqueRegistryKey& key, const wchar_t* value, const std::wstring& text)
{
    return RegSetValueExW(key.Get(), value, 0, REG_SZ, reinterpret_cast<const BYTE*>(text.c_str()),
                          static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t)));
}

} // namespace

PrefixClass::PrefixClass(REFCLSID classId, const std::wstring& library)
{
    wchar_t id[64] = {};
    StringFromGUID2(classId, id, 64);
    key_ = std::wstring(L"Software\\Classes\\CLSID\\") + id + L"\\InprocServer32";
    const UniqueRegistryKey key = Open(key_);
    const std::optional<std::wstring> own = Read(key, kHostLibrary);
    if (!own &&
        Write(key, kHostLibrary, Read(key, nullptr).value_or(std::wstring())) != ERROR_SUCCESS) {
        throw std::runtime_error("cannot save the library of a COM class");
    }
    if (Write(key, nullptr, library) != ERROR_SUCCESS) {
        throw std::runtime_error("cannot replace the library of a COM class");
    }
}

PrefixClass::~PrefixClass()
{
    try {
        const UniqueRegistryKey key = Open(key_);
        if (const auto own = Read(key, kHostLibrary)) {
            Write(key, nullptr, *own);
            RegDeleteValueW(key.Get(), kHostLibrary);
        }
    } catch (
        const std::exception&) { // NOLINT(bugprone-empty-catch): the key does not exist any more
    }
}

PrefixStandIns::PrefixStandIns(Wmi wmi)
{
    const std::wstring library = system::code_page::v1::NarrowToWide(
        OwnFolder() + "\\..\\programs\\dm_standins.dll", CP_ACP);
    for (const CLSID& classId : kFirewallClasses) {
        classes_.push_back(std::make_unique<PrefixClass>(classId, library));
    }
    if (wmi == Wmi::kBroken) {
        classes_.push_back(std::make_unique<PrefixClass>(kWbemLocator, L"there_is_none.dll"));
        whoseWmi_ = "none";
    } else if (wmi == Wmi::kAsComplete && HostWmiIsComplete()) {
        whoseWmi_ = "WMI of the host";
    } else {
        classes_.push_back(std::make_unique<PrefixClass>(kWbemLocator, library));
        whoseWmi_ = wmi == Wmi::kStandIn ? "the stand-in"
                                         : "the stand-in, because WMI of the host is incomplete";
    }
    EraseAllFirewallRules();
}

PrefixStandIns::~PrefixStandIns()
{
    EraseAllFirewallRules();
}

} // namespace vqrx::test
