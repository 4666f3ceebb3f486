#include "RightsChecks.h"

#include "ConnectionChecks.h"
#include "GuardArguments.h"
#include "LetterCase.h"
#include "ObjectRights.h"
#include "Utf8.h"
#include "daemon_manager/SupervisorIdentity.h"
#include "file/OwnProgram.h"
#include "installation/FirmwareRoot.h"
#include "installation/InstallationPaths.h"

#include <algorithm>
#include <set>

namespace vqrx::client::v0 {
namespace {

namespace installation = system::installation::v1;
using Role = PlaceFacts::Role;
using installation::RootKey;

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

void AddInstallation(const std::string& installedProgram, Places& places)
{
    const std::string folder = FolderOf(installedProgram);
    if (!folder.empty()) {
        places.Add(folder, Role::kPrograms);
        places.Add(installedProgram, Role::kProgram);
        places.Add(folder + "\\DaemonMgrPS.dll", Role::kProgram);
        places.Add(folder + "\\" + Utf8(kGuardProgram), Role::kProgram);
        places.Add(folder + "\\daemonctl.exe", Role::kProgram);
        places.Add(folder + "\\Uninstall.exe", Role::kProgram);
    }
    const std::string proxy = ProxyOfMachine();
    if (const std::vector<std::string> way = WayTo(proxy); way.size() > 1) {
        places.Add(way[1], Role::kPrograms); // Windows looks there for what the library imports
    }
    places.Add(proxy, Role::kProgram);
    places.Add(Utf8(system::file::v2::PathOfOwnProgram()), Role::kProgram);
}

// Looks at what lies below a folder of programs, unless the folder lies in one that was looked at.
void AddContent(const std::string& folder, RightsFacts& facts)
{
    const std::vector<std::string> way = WayTo(folder);
    const bool isKnown = std::any_of(way.begin(), way.end(), [&](const std::string& path) {
        return std::any_of(facts.contents.begin(), facts.contents.end(), [&](const auto& content) {
            return WithoutCase(content.folder) == WithoutCase(path);
        });
    });
    if (!folder.empty() && !way.empty() && !isKnown) {
        facts.contents.push_back(ReadContentRights(way.front(), facts.administrators));
    }
}

void AddKeys(RightsFacts& facts)
{
    std::vector<std::string> keys{"SOFTWARE", R"(SOFTWARE\Classes)"};
    for (const RootKey key : {RootKey::kCurrent, RootKey::kOlder}) {
        const std::string name = installation::NameOf(key);
        const std::string below = name.substr(name.find('\\') + 1);
        keys.push_back(FolderOf(below));
        keys.push_back(below);
    }
    const std::string id = Utf8(daemon_manager::kInterfaceId);
    const std::string classKey = R"(SOFTWARE\Classes\CLSID\)" + id;
    const std::string interfaceKey = R"(SOFTWARE\Classes\Interface\)" + id;
    keys.insert(keys.end(), {classKey, classKey + R"(\InProcServer32)", interfaceKey,
                             interfaceKey + R"(\ProxyStubClsid32)"});
    keys.push_back(Utf8(daemon_manager::kInstallerKey));
    // Those that start the guard.
    keys.push_back(R"(SYSTEM\CurrentControlSet\Services\)" + Utf8(kGuardName));
    keys.emplace_back(R"(SOFTWARE\Microsoft\Windows\CurrentVersion\Run)");
    for (const std::string& key : keys) {
        facts.keys.push_back(ReadKeyRights(key));
    }
}

} // namespace

RightsFacts GatherRightsFacts(const std::string& root, const std::vector<std::string>& programs)
{
    RightsFacts facts;
    facts.administrators = TrustedAdministrators();
    const daemon_manager::SupervisorIdentity identity = daemon_manager::IdentifySupervisor();
    facts.supervisorSid = Utf8(identity.notedAccount);
    for (const daemon_manager::SupervisorProcess& process : identity.processes) {
        const std::string sid = Utf8(process.userSid);
        if (process.installedProgram && process.expectedUser &&
            !facts.administrators.contains(sid)) {
            facts.supervisorSid = sid;
        }
    }
    Places places(facts);
    if (!root.empty()) {
        places.Add(installation::AppFolder(root), Role::kPrograms);
        // The guard launches what the fleet file names.
        places.Add(installation::DefaultFleetFile(root), Role::kProgram);
        places.Add(installation::LogFolder(root), Role::kLogs);
        places.Add(installation::LogFile(root), Role::kLogFile);
    }
    AddInstallation(Utf8(identity.installedProgram), places);
    for (const std::string& program : programs) {
        places.Add(program, Role::kProgram);
    }
    places.AddFoldersAbove();
    AddContent(root.empty() ? root : installation::AppFolder(root), facts);
    AddContent(FolderOf(Utf8(identity.installedProgram)), facts);
    AddKeys(facts);
    return facts;
}

} // namespace vqrx::client::v0
