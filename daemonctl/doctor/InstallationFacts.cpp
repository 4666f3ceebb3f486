#include "InstallationFacts.h"

#include "TextEncoding.h"
#include "installation/FirmwareRoot.h"
#include "installation/InstallationPaths.h"
#include "win32/UniqueHandle.h"

#include <windows.h>

#include <shlobj.h>

#include <array>
#include <string>

namespace vqrx::client::v0 {
namespace {

namespace installation = system::installation::v1;

using system::win32::v1::UniqueKernelHandle;

RegistryKeyFacts FactsOf(installation::RootKey key, const installation::RegisteredPathname& value)
{
    return {installation::NameOf(key), value.openError, value.valueError,
            AnsiToUtf8(value.pathname)};
}

FolderFacts LookAtFolder(const std::string& path, DWORD access)
{
    FolderFacts facts;
    facts.path = AnsiToUtf8(path);
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
    using installation::RootKey;
    const installation::RegisteredPathname current = installation::ReadPathname(RootKey::kCurrent);
    const installation::RegisteredPathname older = installation::ReadPathname(RootKey::kOlder);
    facts.currentKey = FactsOf(RootKey::kCurrent, current);
    facts.olderKey = FactsOf(RootKey::kOlder, older);
    std::string root; // ANSI code page
    if (!installation::TryGetFirmwareRoot(root)) {
        return facts;
    }
    facts.root = AnsiToUtf8(root);
    facts.app = LookAtFolder(installation::AppFolder(root), FILE_TRAVERSE);
    facts.logs = LookAtFolder(installation::LogFolder(root), FILE_ADD_FILE);
    const std::string logFile = installation::LogFile(root);
    facts.logFile = AnsiToUtf8(logFile);
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
        facts.debugger = AnsiToUtf8(debugger.data());
    }
    facts.errorMode =
        NumberValue(HKEY_LOCAL_MACHINE, R"(SYSTEM\CurrentControlSet\Control\Windows)", "ErrorMode");
    return facts;
}

} // namespace vqrx::client::v0
