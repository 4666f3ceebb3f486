#include "daemon_manager/SupervisorIdentity.h"

#include "OwnedHandle.h"
#include "SidText.h"

#include <windows.h>

#include <tlhelp32.h>

#include <cstddef>
#include <cwchar>

namespace daemon_manager {
namespace {

// Reads a text below HKEY_LOCAL_MACHINE; empty if there is none.
std::wstring MachineText(const wchar_t* key, const wchar_t* value)
{
    std::wstring text(1024, L'\0');
    auto size = static_cast<DWORD>(text.size() * sizeof(wchar_t));
    if (RegGetValueW(HKEY_LOCAL_MACHINE, key, value, RRF_RT_REG_SZ, nullptr, &text[0], &size) !=
        ERROR_SUCCESS) {
        return {};
    }
    text.resize(std::wcslen(text.c_str()));
    return text;
}

bool IsFile(const std::wstring& path)
{
    const DWORD attributes = GetFileAttributesW(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0;
}

std::wstring InstalledProgram()
{
    const std::wstring proxyKey =
        L"SOFTWARE\\Classes\\CLSID\\" + std::wstring(kInterfaceId) + L"\\InProcServer32";
    const std::wstring proxy = MachineText(proxyKey.c_str(), nullptr);
    const std::size_t end = proxy.find_last_of(L'\\');
    if (end != std::wstring::npos) {
        std::wstring program = proxy.substr(0, end + 1) + kSupervisorProgram;
        if (IsFile(program)) {
            return program;
        }
    }
    const std::wstring folder = MachineText(kInstallerKey, L"InstallLocation");
    const std::wstring program = folder + L"\\" + kSupervisorProgram;
    return !folder.empty() && IsFile(program) ? program : std::wstring();
}

bool IsSameFile(const std::wstring& left, const std::wstring& right)
{
    BY_HANDLE_FILE_INFORMATION found[2] = {};
    const std::wstring* const paths[2] = {&left, &right};
    for (int index = 0; index < 2; ++index) {
        const OwnedHandle file = Own(CreateFileW(
            paths[index]->c_str(), 0, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
            nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr));
        if (!file || GetFileInformationByHandle(file.get(), &found[index]) == FALSE) {
            return false;
        }
    }
    return found[0].dwVolumeSerialNumber == found[1].dwVolumeSerialNumber &&
           found[0].nFileIndexHigh == found[1].nFileIndexHigh &&
           found[0].nFileIndexLow == found[1].nFileIndexLow;
}

// The user and the groups of a process.
class ProcessToken {
public:
    explicit ProcessToken(HANDLE process)
    {
        HANDLE raw = nullptr;
        if (process != nullptr && OpenProcessToken(process, TOKEN_QUERY, &raw) != FALSE) {
            const OwnedHandle token(raw);
            user_ = Information(token.get(), TokenUser);
            owner_ = Information(token.get(), TokenOwner);
            groups_ = Information(token.get(), TokenGroups);
        }
    }

    [[nodiscard]] bool Known() const { return !user_.empty(); }

    [[nodiscard]] PSID User() const
    {
        return reinterpret_cast<const TOKEN_USER*>(user_.data())->User.Sid;
    }

    // Null if it is not known.
    [[nodiscard]] PSID Owner() const
    {
        return owner_.empty() ? nullptr
                              : reinterpret_cast<const TOKEN_OWNER*>(owner_.data())->Owner;
    }

    // Whether the process may use the rights of administrators.
    [[nodiscard]] bool IsAdministrator() const
    {
        if (groups_.empty()) {
            return false;
        }
        const auto* const groups = reinterpret_cast<const TOKEN_GROUPS*>(groups_.data());
        for (DWORD index = 0; index < groups->GroupCount; ++index) {
            const SID_AND_ATTRIBUTES& group = groups->Groups[index];
            if ((group.Attributes & SE_GROUP_ENABLED) != 0 &&
                IsWellKnownSid(group.Sid, WinBuiltinAdministratorsSid) != FALSE) {
                return true;
            }
        }
        return false;
    }

private:
    static std::vector<unsigned char> Information(HANDLE token, TOKEN_INFORMATION_CLASS what)
    {
        DWORD size = 0;
        GetTokenInformation(token, what, nullptr, 0, &size);
        std::vector<unsigned char> buffer(size);
        if (size == 0 || GetTokenInformation(token, what, buffer.data(), size, &size) == FALSE) {
            buffer.clear();
        }
        return buffer;
    }

    std::vector<unsigned char> user_;
    std::vector<unsigned char> owner_;
    std::vector<unsigned char> groups_;
};

std::wstring NameOf(PSID sid)
{
    wchar_t name[256] = {};
    wchar_t domain[256] = {};
    DWORD nameSize = 256;
    DWORD domainSize = 256;
    SID_NAME_USE use{};
    if (LookupAccountSidW(nullptr, sid, name, &nameSize, domain, &domainSize, &use) == FALSE) {
        return SidText(sid);
    }
    return std::wstring(domain) + L"\\" + name;
}

bool IsExpected(const ProcessToken& token, const ProcessToken& own, const std::wstring& noted)
{
    PSID const user = token.User();
    const std::wstring text = SidText(user);
    return (own.Known() && EqualSid(user, own.User()) != FALSE) || token.IsAdministrator() ||
           IsWellKnownSid(user, WinLocalSystemSid) != FALSE ||
           IsWellKnownSid(user, WinLocalServiceSid) != FALSE ||
           IsWellKnownSid(user, WinNetworkServiceSid) != FALSE || IsSidOfService(text) ||
           (!text.empty() && text == noted);
}

// Characters that a path can have. With less room a process with a long path would count as one
// that this user may not examine.
constexpr std::size_t kLongestPath = 32768;

SupervisorProcess Describe(DWORD processId, const SupervisorIdentity& identity,
                           const ProcessToken& own)
{
    SupervisorProcess found;
    found.processId = processId;
    DWORD session = 0;
    if (ProcessIdToSessionId(processId, &session) != FALSE) {
        found.session = session;
    }
    const OwnedHandle process =
        Own(OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION, FALSE, processId));
    std::wstring path(kLongestPath, L'\0');
    auto length = static_cast<DWORD>(path.size());
    if (process && QueryFullProcessImageNameW(process.get(), 0, &path[0], &length) != FALSE) {
        found.program.assign(path, 0, length);
        found.installedProgram = !identity.installedProgram.empty() &&
                                 IsSameFile(found.program, identity.installedProgram);
    }
    FILETIME created{};
    FILETIME other{};
    if (process && GetProcessTimes(process.get(), &created, &other, &other, &other) != FALSE) {
        found.created =
            (static_cast<std::uint64_t>(created.dwHighDateTime) << 32U) | created.dwLowDateTime;
    }
    const ProcessToken token(process.get());
    if (token.Known()) {
        found.userKnown = true;
        found.user = NameOf(token.User());
        found.userSid = SidText(token.User());
        found.ownerSid = token.Owner() != nullptr ? SidText(token.Owner()) : std::wstring();
        found.expectedUser = IsExpected(token, own, identity.notedAccount);
    }
    return found;
}

std::string Utf8(const std::wstring& text)
{
    const int length = static_cast<int>(text.size());
    const int bytes =
        WideCharToMultiByte(CP_UTF8, 0, text.data(), length, nullptr, 0, nullptr, nullptr);
    std::string result(bytes > 0 ? static_cast<std::size_t>(bytes) : 0, '\0');
    if (!result.empty()) {
        WideCharToMultiByte(CP_UTF8, 0, text.data(), length, &result[0], bytes, nullptr, nullptr);
    }
    return result;
}

std::string ProcessName(const SupervisorProcess& process)
{
    return "process " + std::to_string(process.processId);
}

} // namespace

SupervisorIdentity IdentifySupervisor()
{
    SupervisorIdentity identity;
    identity.installedProgram = InstalledProgram();
    identity.notedAccount = MachineText(kInstallerKey, L"Account");
    const ProcessToken own(GetCurrentProcess());
    const OwnedHandle snapshot = Own(CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0));
    PROCESSENTRY32W entry{};
    entry.dwSize = sizeof entry;
    BOOL more = snapshot ? Process32FirstW(snapshot.get(), &entry) : FALSE;
    while (more != FALSE) {
        if (lstrcmpiW(entry.szExeFile, kSupervisorProgram) == 0) {
            identity.processes.push_back(Describe(entry.th32ProcessID, identity, own));
        }
        more = Process32NextW(snapshot.get(), &entry);
    }
    const DWORD error = GetLastError(); // of the last of the three calls, which has failed
    identity.listError = error == ERROR_NO_MORE_FILES ? ERROR_SUCCESS : error;
    JudgeIdentity(identity);
    return identity;
}

void JudgeIdentity(SupervisorIdentity& identity)
{
    identity.trust = SupervisorTrust::kUnknown;
    identity.reason.clear();
    if (identity.installedProgram.empty()) {
        identity.reason = "nothing on this machine names the installed supervisor: DaemonMgrPS.dll "
                          "is not registered beside DaemonManager.exe";
        return;
    }
    const SupervisorProcess* installed = nullptr;
    const SupervisorProcess* hidden = nullptr;
    const SupervisorProcess* ofOther = nullptr;
    for (const SupervisorProcess& process : identity.processes) {
        if (process.program.empty() || (process.installedProgram && !process.userKnown)) {
            hidden = &process;
        } else if (process.installedProgram) {
            (process.expectedUser ? installed : ofOther) = &process;
        }
    }
    if (ofOther != nullptr) {
        identity.reason = ProcessName(*ofOther) + " runs " + Utf8(ofOther->program) + " as " +
                          Utf8(ofOther->user) + ", who is not expected to run the supervisor";
    }
    if (installed != nullptr) {
        identity.trust = SupervisorTrust::kKnown;
    } else if (identity.listError != 0) {
        identity.reason = "the list of processes cannot be read: Windows error " +
                          std::to_string(identity.listError);
    } else if (hidden != nullptr) { // a stranger beside the supervisor must not hide it
        identity.reason =
            "this user may not examine " + ProcessName(*hidden) + ", which may be the supervisor";
    } else if (ofOther != nullptr) {
        identity.trust = SupervisorTrust::kStranger;
    } else {
        identity.trust = SupervisorTrust::kStranger;
        identity.reason =
            "no process runs " + Utf8(identity.installedProgram) +
            ", so another program has published an object under the supervisor's name";
    }
}

} // namespace daemon_manager
