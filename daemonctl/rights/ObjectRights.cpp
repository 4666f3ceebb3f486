#include "ObjectRights.h"

#include "AccountNames.h"
#include "DriveTarget.h"
#include "Utf8.h"
#include "win32/LocalMemory.h"
#include "win32/UniqueHandle.h"

#include <windows.h>

#include <aclapi.h>
#include <sddl.h>
#include <shlobj.h>

#include <cstddef>
#include <cwchar>
#include <iterator>

namespace vqrx::client::v0 {
namespace {

using system::win32::v1::UniqueKernelHandle;
using system::win32::v1::UniqueLocalMemory;

// Adds the entry of an access list if it grants something. Every entry that
// grants a right begins like ACCESS_ALLOWED_ACE, also one with a condition; the SID of an entry for
// a kind of objects, which files do not have, stands elsewhere, so that entry counts as
// everybody's.
void AddEntry(const ACE_HEADER& header, std::vector<GrantedRight>& granted)
{
    constexpr BYTE kAllowed = 0;
    constexpr BYTE kAllowedObject = 5;
    constexpr BYTE kAllowedCallback = 9;
    constexpr BYTE kAllowedCallbackObject = 11;
    const bool onlyInherited = (header.AceFlags & INHERIT_ONLY_ACE) != 0;
    const auto& entry = reinterpret_cast<const ACCESS_ALLOWED_ACE&>(header);
    if (header.AceType == kAllowed || header.AceType == kAllowedCallback) {
        auto* const sid = const_cast<DWORD*>(&entry.SidStart); // NOLINT: Windows' type for a SID
        granted.push_back({SidText(sid), NameOfSid(sid), entry.Mask, onlyInherited});
    } else if (header.AceType == kAllowedObject || header.AceType == kAllowedCallbackObject) {
        granted.push_back({"S-1-1-0", "Everyone", entry.Mask, onlyInherited});
    }
}

void ReadSecurity(const std::wstring& path, SE_OBJECT_TYPE type, ObjectRights& rights)
{
    PSID owner = nullptr;
    PACL list = nullptr;
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    rights.error = GetNamedSecurityInfoW(path.c_str(), type,
                                         OWNER_SECURITY_INFORMATION | DACL_SECURITY_INFORMATION,
                                         &owner, nullptr, &list, nullptr, &descriptor);
    const UniqueLocalMemory<void> memory(descriptor);
    if (rights.error != 0) {
        return;
    }
    rights.ownerSid = owner != nullptr ? SidText(owner) : std::string();
    rights.ownerName = owner != nullptr ? NameOfSid(owner) : std::string("nobody");
    rights.unprotected = list == nullptr;
    for (DWORD index = 0; list != nullptr && index < list->AceCount; ++index) {
        void* entry = nullptr;
        if (GetAce(list, index, &entry) != FALSE) {
            AddEntry(*static_cast<const ACE_HEADER*>(entry), rights.granted);
        }
    }
}

std::wstring FullPath(const std::string& path)
{
    const std::wstring wide = Wide(path);
    std::wstring full(GetFullPathNameW(wide.c_str(), 0, nullptr, nullptr), L'\0');
    const DWORD length =
        GetFullPathNameW(wide.c_str(), static_cast<DWORD>(full.size()), full.data(), nullptr);
    full.resize(length < full.size() ? length : 0);
    while (full.size() > 3 && full.back() == L'\\') {
        full.pop_back();
    }
    return full;
}

constexpr std::size_t kRootLength = 3; // of "C:\\"
constexpr std::size_t kDriveLength = 2;
constexpr const char* kNoPath = " lies on a network or is no path";

bool IsOnDrive(const std::wstring& full)
{
    return full.size() >= kRootLength && full[1] == L':';
}

DriveAnswers AskAboutDrive(const std::wstring& drive)
{
    constexpr DWORD kMaxDeviceText = 32768;
    std::wstring devices(kMaxDeviceText, L'\0');
    const DWORD length = QueryDosDeviceW(drive.c_str(), devices.data(), kMaxDeviceText);
    const bool isUnknown = length == 0 && GetLastError() != ERROR_FILE_NOT_FOUND;
    devices.resize(length == 0 ? 0 : std::wcslen(devices.c_str())); // the first one counts
    return {GetDriveTypeW((drive + L"\\").c_str()) == DRIVE_REMOTE, Utf8(devices), isUnknown};
}

// Puts the folder that a drive of "subst" stands for in the place of the drive.
// @return empty for a path that does not lie on this machine
std::wstring WithoutSubstitutes(std::wstring full)
{
    constexpr int kMostDrives = 26; // a chain of more drives goes round in a circle
    for (int step = 0; step <= kMostDrives && IsOnDrive(full); ++step) {
        const DriveTarget target = JudgeDrive(AskAboutDrive(full.substr(0, kDriveLength)));
        if (target.kind == DriveTarget::Kind::kHere) {
            return full;
        }
        if (target.kind == DriveTarget::Kind::kElsewhere) {
            return {};
        }
        full = FullPath(target.folder + Utf8(full.substr(kDriveLength)));
    }
    return {};
}

std::wstring ParentOf(const std::wstring& full)
{
    const std::size_t end = full.rfind(L'\\');
    return full.substr(0, end < kRootLength ? kRootLength : end);
}

// Adds the weaknesses of folders as places of other objects.
void AddParents(const std::vector<std::string>& way, std::size_t first, const TrustedSids& trusted,
                std::vector<std::string>& found)
{
    for (std::size_t index = first; index < way.size(); ++index) {
        std::vector<std::string> more = WeaknessesOfParent(ReadRights(way[index]), trusted);
        found.insert(found.end(), std::make_move_iterator(more.begin()),
                     std::make_move_iterator(more.end()));
    }
}

} // namespace

std::string NameOfAccount(const std::string& sid)
{
    PSID converted = nullptr;
    if (ConvertStringSidToSidW(Wide(sid).c_str(), &converted) == FALSE) {
        return sid;
    }
    const UniqueLocalMemory<void> owner(converted);
    return NameOfSid(converted);
}

ObjectRights ReadRights(const std::string& path)
{
    ObjectRights rights;
    rights.path = path;
    const std::wstring wide = Wide(path);
    const DWORD attributes = GetFileAttributesW(wide.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES) {
        rights.error = GetLastError();
        return rights;
    }
    const bool isFolder = (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    rights.kind = isFolder ? ObjectRights::Kind::kFolder : ObjectRights::Kind::kFile;
    rights.reparsePoint = (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
    ReadSecurity(wide, SE_FILE_OBJECT, rights);
    return rights;
}

std::string SecondNameOf(const std::string& file)
{
    const UniqueKernelHandle handle(
        CreateFileW(Wide(file).c_str(), FILE_READ_ATTRIBUTES,
                    FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING,
                    FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT, nullptr));
    BY_HANDLE_FILE_INFORMATION information{};
    if (!handle || GetFileInformationByHandle(handle.Get(), &information) == FALSE) {
        const DWORD error = GetLastError();
        return file + " cannot be opened (Windows error " + std::to_string(error) + ")";
    }
    return information.nNumberOfLinks > 1 ? file + " also has another name (a hard link)" : "";
}

ObjectRights ReadKeyRights(const std::string& key)
{
    ObjectRights rights;
    rights.path = "HKLM\\" + key;
    rights.kind = ObjectRights::Kind::kRegistryKey;
    ReadSecurity(L"MACHINE\\" + Wide(key), SE_REGISTRY_KEY, rights);
    return rights;
}

TrustedSids TrustedAdministrators()
{
    TrustedSids trusted{"S-1-5-18",     // SYSTEM
                        "S-1-5-32-544", // Administrators
                        // TrustedInstaller
                        "S-1-5-80-956008885-3418522649-1831038044-1853292631-2271478464"};
    if (IsUserAnAdmin() != FALSE) {
        trusted.insert(SidOfThisUser());
    }
    trusted.erase("");
    return trusted;
}

std::vector<std::string> WayTo(const std::string& path)
{
    std::wstring full = WithoutSubstitutes(FullPath(path));
    std::vector<std::string> way;
    if (full.empty()) {
        return way;
    }
    for (;;) {
        way.push_back(Utf8(full));
        if (full.size() <= kRootLength) {
            return way;
        }
        full = ParentOf(full);
    }
}

std::vector<std::string> WeaknessesOfPath(const std::string& path, const TrustedSids& trusted)
{
    const std::vector<std::string> way = WayTo(path);
    if (way.empty()) {
        return {path + kNoPath};
    }
    std::vector<std::string> found = Weaknesses(ReadRights(way.front()), trusted);
    AddParents(way, 1, trusted, found);
    return found;
}

std::vector<std::string> WeaknessesOfParentPath(const std::string& path, const TrustedSids& trusted)
{
    const std::vector<std::string> way = WayTo(path);
    if (way.empty()) {
        return {path + kNoPath};
    }
    std::vector<std::string> found;
    AddParents(way, 0, trusted, found);
    return found;
}

} // namespace vqrx::client::v0
