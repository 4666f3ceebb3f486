#include "InstallationChecks.h"

#include "FilePresence.h"
#include "TextEncoding.h"
#include "installation/FirmwareRoot.h"
#include "installation/InstallationPaths.h"
#include "ring_format/DamagedRing.h"
#include "win32/UniqueHandle.h"

#include <windows.h>

#include <shlobj.h>

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

// Opens a folder with the given access rights and closes it again.
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

// Opens a file for writing and closes it again. @return the Windows error, 0 for none
std::uint32_t ErrorOfWriting(const std::string& path)
{
    const UniqueKernelHandle file(CreateFileA(path.c_str(), GENERIC_READ | GENERIC_WRITE,
                                              FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                              OPEN_EXISTING, 0, nullptr));
    return file ? 0 : GetLastError();
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
    for (const std::string& damaged : system::ring_format::v1::DamagedRingsOf(facts.logFile)) {
        if (IsFile(damaged)) { // a folder of that name is no log
            facts.damagedLogs.push_back(damaged);
        }
    }
    ULARGE_INTEGER free{};
    if (GetDiskFreeSpaceExA((root + "\\").c_str(), &free, nullptr, nullptr) != FALSE) {
        facts.freeBytes = free.QuadPart;
    }
    return facts;
}

} // namespace vqrx::client::v0
