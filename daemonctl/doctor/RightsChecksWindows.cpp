#include "RightsChecks.h"

#include "LetterCase.h"
#include "ObjectRights.h"
#include "Utf8.h"
#include "daemon_manager/SupervisorIdentity.h"
#include "installation/FirmwareRoot.h"

#include <windows.h>

#include <algorithm>
#include <set>

namespace vqrx::client::v0 {
namespace {

using Role = PlaceFacts::Role;
using system::installation::v1::RootKey;

// The id of the interface, which is also that of the proxy/stub's class.
constexpr const char* kInterfaceId = "{C307E9F6-67C0-4C74-B1BD-37EFB9882701}";

// Collects places, each once. The first role of a path counts.
class Places {
public:
    explicit Places(RightsFacts& facts)
        : facts_(facts)
    {
    }

    void Add(const std::string& path, Role role)
    {
        const std::vector<std::string> way = WayTo(path);
        if (path.empty()) {
            return;
        }
        if (way.empty()) {
            facts_.unjudged.push_back(path);
            return;
        }
        AddOnce(way.front(), role);
        above_.insert(above_.end(), way.begin() + 1, way.end());
    }

    // Adds the folders above all places, and puts them before these, the highest first: whoever may
    // change a folder above may change the repaired rights below it.
    void AddFoldersAbove()
    {
        std::stable_sort(above_.begin(), above_.end(),
                         [](const std::string& left, const std::string& right) {
                             return left.size() < right.size();
                         });
        const auto below = static_cast<std::ptrdiff_t>(facts_.places.size());
        for (const std::string& folder : above_) {
            AddOnce(folder, Role::kAbove);
        }
        std::rotate(facts_.places.begin(), facts_.places.begin() + below, facts_.places.end());
    }

private:
    void AddOnce(const std::string& path, Role role)
    {
        if (seen_.insert(WithoutCase(path)).second) {
            facts_.places.push_back({ReadRights(path), role});
        }
    }

    RightsFacts& facts_;
    std::vector<std::string> above_;
    std::set<std::string> seen_;
};

std::string FolderOf(const std::string& path)
{
    const std::size_t end = path.rfind('\\');
    return end == std::string::npos ? std::string() : path.substr(0, end);
}

std::string PathOfThisProgram()
{
    std::wstring path(32768, L'\0'); // the longest path that Windows has
    path.resize(GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
    return Utf8(path);
}

void AddInstallation(const std::string& installedProgram, Places& places)
{
    const std::string folder = FolderOf(installedProgram);
    if (!folder.empty()) {
        places.Add(folder, Role::kPrograms);
        places.Add(installedProgram, Role::kProgram);
        places.Add(folder + "\\DaemonMgrPS.dll", Role::kProgram);
        places.Add(folder + "\\DaemonGuard.exe", Role::kProgram);
    }
    places.Add(PathOfThisProgram(), Role::kProgram);
}

void AddKeys(RightsFacts& facts)
{
    std::vector<std::string> keys{"SOFTWARE", R"(SOFTWARE\Classes)"};
    for (const RootKey key : {RootKey::kCurrent, RootKey::kOlder}) {
        const std::string name = system::installation::v1::NameOf(key);
        const std::string below = name.substr(name.find('\\') + 1);
        keys.push_back(FolderOf(below));
        keys.push_back(below);
    }
    const std::string classKey = std::string(R"(SOFTWARE\Classes\CLSID\)") + kInterfaceId;
    const std::string interfaceKey = std::string(R"(SOFTWARE\Classes\Interface\)") + kInterfaceId;
    keys.insert(keys.end(), {classKey, classKey + R"(\InProcServer32)", interfaceKey,
                             interfaceKey + R"(\ProxyStubClsid32)"});
    keys.emplace_back(R"(SOFTWARE\Microsoft\Windows\CurrentVersion\Uninstall\DaemonManager)");
    // Those that start the guard.
    keys.emplace_back(R"(SYSTEM\CurrentControlSet\Services\DaemonGuard)");
    keys.emplace_back(R"(SOFTWARE\Microsoft\Windows\CurrentVersion\Run)");
    for (const std::string& key : keys) {
        facts.keys.push_back(ReadKeyRights(key));
    }
}

// Returns the SID of the account that the installer noted for the supervisor; empty if it noted
// none.
std::string NotedAccount()
{
    std::wstring sid(256, L'\0');
    auto size = static_cast<DWORD>(sid.size() * sizeof(wchar_t));
    if (RegGetValueW(HKEY_LOCAL_MACHINE,
                     LR"(SOFTWARE\Microsoft\Windows\CurrentVersion\Uninstall\DaemonManager)",
                     L"Account", RRF_RT_REG_SZ, nullptr, sid.data(), &size) != ERROR_SUCCESS) {
        return {};
    }
    return Utf8(sid.c_str());
}

} // namespace

RightsFacts GatherRightsFacts(const std::string& root, const std::vector<std::string>& programs)
{
    RightsFacts facts;
    facts.administrators = TrustedAdministrators();
    facts.supervisorSid = NotedAccount();
    const daemon_manager::SupervisorIdentity identity = daemon_manager::IdentifySupervisor();
    for (const daemon_manager::SupervisorProcess& process : identity.processes) {
        const std::string sid = Utf8(process.userSid);
        if (process.installedProgram && process.expectedUser &&
            !facts.administrators.contains(sid)) {
            facts.supervisorSid = sid;
        }
    }
    Places places(facts);
    if (!root.empty()) {
        places.Add(root + "\\App", Role::kPrograms);
        places.Add(root + "\\App\\fleet.txt", Role::kProgram); // the guard launches what it names
        places.Add(root + "\\Logs", Role::kLogs);
        places.Add(root + "\\Logs\\DaemonManager.log", Role::kLogFile);
    }
    AddInstallation(Utf8(identity.installedProgram), places);
    for (const std::string& program : programs) {
        places.Add(program, Role::kProgram);
    }
    places.AddFoldersAbove();
    AddKeys(facts);
    return facts;
}

} // namespace vqrx::client::v0
