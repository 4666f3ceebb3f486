#include "InstallationFacts.h"

#include "RootFromPathname.h"
#include "com/TextConversion.h"
#include "win32/UniqueHandle.h"

#include <windows.h>

#include <shlobj.h>

#include <array>
#include <string>

namespace vqrx::client::v0 {
namespace {

using system::win32::v1::UniqueKernelHandle;
using system::win32::v1::UniqueRegistryKey;

constexpr DWORD kMaxPathname = 255; // bytes, as the supervisor reads it

std::string Utf8OfAnsi(const std::string& text)
{
    using namespace system::com::v1;
    return WideToNarrow(NarrowToWide(text, CP_ACP), CP_UTF8);
}

// Fills the facts. @return the value in the ANSI code page
std::string ReadPathname(const char* name, RegistryKeyFacts& facts)
{
    facts.name = std::string("HKLM\\") + name;
    UniqueRegistryKey key;
    const LSTATUS opened = RegOpenKeyExA(HKEY_LOCAL_MACHINE, name, 0, KEY_QUERY_VALUE, key.Put());
    facts.openError = static_cast<std::uint32_t>(opened);
    if (opened != ERROR_SUCCESS) {
        return {};
    }
    std::array<char, kMaxPathname + 1> buffer{};
    DWORD size = kMaxPathname;
    const LSTATUS read = RegQueryValueExA(key.Get(), "Pathname", nullptr, nullptr,
                                          reinterpret_cast<BYTE*>(buffer.data()), &size);
    facts.valueError = static_cast<std::uint32_t>(read);
    if (read != ERROR_SUCCESS) {
        return {};
    }
    facts.pathname = Utf8OfAnsi(buffer.data());
    return buffer.data();
}

FolderFacts LookAtFolder(const std::string& path, DWORD access)
{
    FolderFacts facts;
    facts.path = Utf8OfAnsi(path);
    const DWORD attributes = GetFileAttributesA(path.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES) {
        facts.error = GetLastError();
        return facts;
    }
    facts.isFolder = (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    const UniqueKernelHandle folder(
        CreateFileA(path.c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                    nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr));
    if (!folder) {
        facts.error = GetLastError();
    }
    return facts;
}

std::uint32_t ErrorOfWriting(const std::string& path)
{
    const UniqueKernelHandle file(CreateFileA(path.c_str(), GENERIC_READ | GENERIC_WRITE,
                                              FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                              OPEN_EXISTING, 0, nullptr));
    return file ? 0 : GetLastError();
}

std::uint32_t NumberValue(HKEY root, const char* key, const char* value)
{
    DWORD number = 0;
    DWORD size = sizeof number;
    RegGetValueA(root, key, value, RRF_RT_REG_DWORD, nullptr, &number, &size);
    return number;
}

} // namespace

InstallationFacts GatherInstallationFacts()
{
    InstallationFacts facts;
    facts.administrator = IsUserAnAdmin() != FALSE;
    const std::string current =
        ReadPathname(R"(SOFTWARE\UnitWarden\CurrentVersion)", facts.currentKey);
    const std::string older =
        ReadPathname(R"(SOFTWARE\VANTORO_QRX\CurrentVersion)", facts.olderKey);
    const bool isCurrent = facts.currentKey.openError == 0;
    const RegistryKeyFacts& used = isCurrent ? facts.currentKey : facts.olderKey;
    if (used.openError != 0 || used.valueError != 0) {
        return facts;
    }
    const std::string root = app::v0::RootFromPathname(isCurrent ? current : older);
    facts.root = Utf8OfAnsi(root);
    facts.app = LookAtFolder(root + "\\App", FILE_TRAVERSE);
    facts.logs = LookAtFolder(root + "\\Logs", FILE_ADD_FILE);
    const std::string logFile = root + "\\Logs\\DaemonManager.log";
    facts.logFile = Utf8OfAnsi(logFile);
    facts.logFileError = ErrorOfWriting(logFile);
    ULARGE_INTEGER free{};
    if (GetDiskFreeSpaceExA((root + "\\").c_str(), &free, nullptr, nullptr) != FALSE) {
        facts.freeBytes = free.QuadPart;
    }
    return facts;
}

CrashDialogFacts GatherCrashDialogFacts()
{
    constexpr const char* reporting = R"(SOFTWARE\Microsoft\Windows\Windows Error Reporting)";
    constexpr const char* policy = R"(SOFTWARE\Policies\Microsoft\Windows\Windows Error Reporting)";
    const auto off = [&](HKEY root, const char* value) {
        return NumberValue(root, reporting, value) == 1 || NumberValue(root, policy, value) == 1;
    };
    CrashDialogFacts facts;
    facts.reportingDisabled = off(HKEY_LOCAL_MACHINE, "Disabled");
    facts.dialogsOff = off(HKEY_LOCAL_MACHINE, "DontShowUI");
    facts.offForThisUser =
        off(HKEY_CURRENT_USER, "Disabled") || off(HKEY_CURRENT_USER, "DontShowUI");
    std::array<char, 1024> debugger{};
    auto size = static_cast<DWORD>(debugger.size());
    if (RegGetValueA(HKEY_LOCAL_MACHINE, R"(SOFTWARE\Microsoft\Windows NT\CurrentVersion\AeDebug)",
                     "Debugger", RRF_RT_REG_SZ, nullptr, debugger.data(), &size) == ERROR_SUCCESS) {
        facts.debugger = Utf8OfAnsi(debugger.data());
    }
    facts.errorMode =
        NumberValue(HKEY_LOCAL_MACHINE, R"(SYSTEM\CurrentControlSet\Control\Windows)", "ErrorMode");
    return facts;
}

} // namespace vqrx::client::v0
