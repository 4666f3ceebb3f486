#include "RightsRemedies.h"

#include "PasteableText.h"

namespace vqrx::client::v0 {
namespace {

using Role = PlaceFacts::Role;

constexpr const char* kUsers = "S-1-5-32-545";
constexpr std::size_t kRootOfDrive = 3; // length of "C:\"

// The SIDs are spelt out because the names of the groups differ between the languages of Windows.
constexpr const char* kOnlyAdministrators =
    R"( /inheritance:r /grant:r "*S-1-5-18:(OI)(CI)F" "*S-1-5-32-544:(OI)(CI)F")";
constexpr const char* kUsersRead = R"("*S-1-5-32-545:(OI)(CI)RX")";

// Takes rights away that were given to the object itself; inherited ones go in another way.
void TakeAway(const std::string& icacls, const std::vector<GrantedRight>& grants, bool usersToo,
              std::vector<std::string>& commands)
{
    std::string sids;
    for (const GrantedRight& grant : grants) {
        if (usersToo || grant.sid != kUsers) {
            sids += " *" + grant.sid;
        }
    }
    if (!sids.empty()) {
        commands.push_back(icacls + " /remove:g" + sids);
    }
}

void RepairAbove(const std::string& icacls, const ObjectRights& rights, const TrustedSids& trusted,
                 std::vector<std::string>& commands)
{
    const std::vector<GrantedRight> grants = GrantsToStrangersOfParent(rights, trusted);
    if (grants.empty() && !rights.unprotected) {
        return;
    }
    commands.push_back(icacls + " /inheritance:d");
    TakeAway(icacls, grants, true, commands);
    commands.push_back(icacls + " /grant " + kUsersRead);
}

void Repair(const std::string& icacls, const PlaceFacts& place, const TrustedSids& trusted,
            const std::string& supervisorSid, std::vector<std::string>& commands)
{
    const std::vector<GrantedRight> grants = IsOfLog(place.role)
                                                 ? GrantsToReaders(place.rights, trusted)
                                                 : GrantsToStrangers(place.rights, trusted);
    if (grants.empty() && !place.rights.unprotected) {
        return;
    }
    if (place.role == Role::kProgram || place.role == Role::kLogFile) {
        commands.push_back(icacls + " /reset"); // the rights of the folder, which is repaired first
        return;
    }
    std::string command = icacls + kOnlyAdministrators;
    if (place.role == Role::kPrograms) {
        command.append(" ").append(kUsersRead);
    } else if (!supervisorSid.empty()) {
        command += " \"*" + supervisorSid + ":(OI)(CI)F\"";
    }
    commands.push_back(command);
    TakeAway(icacls, grants, place.role == Role::kLogs, commands);
}

} // namespace

std::vector<std::string> RemediesFor(const PlaceFacts& place, const TrustedSids& trusted,
                                     const std::string& supervisorSid)
{
    const ObjectRights& rights = place.rights;
    const bool isAbove = place.role == Role::kAbove;
    const bool hasReaders = IsOfLog(place.role) && !Readers(rights, trusted).empty();
    if (!hasReaders &&
        (isAbove ? WeaknessesOfParent(rights, trusted) : Weaknesses(rights, trusted)).empty()) {
        return {};
    }
    if (rights.error != 0) {
        return {"To see all rights: daemonctl doctor"};
    }
    if (rights.reparsePoint) { // a command would change the rights of what the link leads to
        return {"Replace " + rights.path + " by a folder: somebody may turn the link elsewhere."};
    }
    std::vector<std::string> commands;
    const std::string path = QuotedForPasting(rights.path);
    if (path.empty() || (isAbove && rights.path.size() <= kRootOfDrive)) {
        commands.push_back("Let only administrators own and change " + rights.path +
                           ": its properties, page Security.");
        return commands;
    }
    const std::string icacls = "icacls " + path;
    if (!trusted.contains(rights.ownerSid)) {
        commands.push_back(icacls + " /setowner *S-1-5-32-544");
    }
    if (isAbove) {
        RepairAbove(icacls, rights, trusted, commands);
    } else {
        Repair(icacls, place, trusted, supervisorSid, commands);
    }
    return commands;
}

std::vector<std::string> RemediesForKey(const ObjectRights& key)
{
    const std::string shell = "HKLM:" + key.path.substr(key.path.find('\\'));
    if (key.path == R"(HKLM\SOFTWARE)" || key.path == R"(HKLM\SOFTWARE\Classes)" ||
        key.path == R"(HKLM\SOFTWARE\Microsoft\Windows\CurrentVersion\Run)" ||
        shell.find('\'') != std::string::npos) {
        return {key.path +
                " belongs to Windows: give it the rights that it has on another machine."};
    }
    return {"$a = Get-Acl '" + shell +
            "'; $a.SetSecurityDescriptorSddlForm("
            "'O:BAG:BAD:P(A;CI;KA;;;SY)(A;CI;KA;;;BA)(A;CI;KR;;;BU)'); Set-Acl '" +
            shell + "' $a"};
}

} // namespace vqrx::client::v0
