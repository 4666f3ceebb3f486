#include "Weaknesses.h"

#include <cstddef>

namespace vqrx::client::v0 {
namespace {

// The numbers of winnt.h. For a folder 2 is "add a file", 4 "add a folder"; for a registry key 2 is
// "set a value", 4 "make a key", 0x20 "make a link".
constexpr std::uint32_t kReadData = 0x00000001;
constexpr std::uint32_t kWriteData = 0x00000002;
constexpr std::uint32_t kAppendData = 0x00000004;
constexpr std::uint32_t kWriteExtended = 0x00000010;
constexpr std::uint32_t kDeleteChild = 0x00000040;
constexpr std::uint32_t kWriteAttributes = 0x00000100;
constexpr std::uint32_t kDelete = 0x00010000;
constexpr std::uint32_t kWriteRights = 0x00040000;
constexpr std::uint32_t kWriteOwner = 0x00080000;
constexpr std::uint32_t kGenericAll = 0x10000000;
constexpr std::uint32_t kGenericWrite = 0x40000000;
constexpr std::uint32_t kGenericRead = 0x80000000;
constexpr std::uint32_t kMakeLink = 0x00000020; // of a registry key

// With the right to change attributes a folder can be made a junction.
constexpr std::uint32_t kReplace = kDeleteChild | kWriteAttributes | kDelete | kWriteRights |
                                   kWriteOwner | kGenericAll | kGenericWrite;
constexpr std::uint32_t kChange = kReplace | kWriteData | kAppendData | kWriteExtended;
constexpr std::uint32_t kRead = kReadData | kGenericRead | kGenericAll;
constexpr std::uint32_t kChangeKey = kWriteData | kAppendData | kMakeLink | kDelete | kWriteRights |
                                     kWriteOwner | kGenericAll | kGenericWrite;

// Nobody can rename the root of a drive, remove it, or make a junction of it while something lies
// in it. On a data drive everybody often has these rights on the root. On any other folder they
// would allow all three.
std::uint32_t ReplaceMaskOf(const ObjectRights& rights)
{
    constexpr std::size_t kRootLength = 3; // of "D:\"
    return rights.path.size() == kRootLength ? kReplace & ~(kDelete | kWriteAttributes) : kReplace;
}

std::uint32_t ChangeMaskOf(const ObjectRights& rights)
{
    return rights.kind == ObjectRights::Kind::kRegistryKey ? kChangeKey : kChange;
}

// CREATOR OWNER and CREATOR GROUP stand for whoever makes an object in the folder.
bool IsCreator(const std::string& sid)
{
    return sid == "S-1-3-0" || sid == "S-1-3-1";
}

// @param withInherited  whether rights count that only new files of the folder get
std::vector<GrantedRight> DangerousGrants(const ObjectRights& rights, const TrustedSids& trusted,
                                          std::uint32_t dangerous, bool withInherited)
{
    std::vector<GrantedRight> found;
    std::set<std::string> named;
    for (const GrantedRight& right : rights.granted) {
        const bool isHarmless = right.onlyInherited && (!withInherited || IsCreator(right.sid));
        if ((right.mask & dangerous) != 0 && !isHarmless && !trusted.contains(right.sid) &&
            named.insert(right.sid).second) {
            found.push_back(right);
        }
    }
    return found;
}

const char* NewObjectsIn(const ObjectRights& rights)
{
    return rights.kind == ObjectRights::Kind::kRegistryKey ? "new keys in " : "new files in ";
}

std::vector<std::string> Judge(const ObjectRights& rights, const TrustedSids& trusted,
                               std::uint32_t dangerous, bool withInherited)
{
    std::vector<std::string> found;
    if (rights.error != 0) {
        found.push_back("the rights of " + rights.path + " cannot be read (Windows error " +
                        std::to_string(rights.error) + ")");
        return found;
    }
    if (rights.reparsePoint) {
        found.push_back(rights.path + " is a junction or a link");
    }
    if (!trusted.contains(rights.ownerSid)) {
        found.push_back(rights.ownerName + " owns " + rights.path);
    }
    if (rights.unprotected) {
        found.push_back("everybody may write to " + rights.path + ", which has no access list");
    }
    for (const GrantedRight& right : DangerousGrants(rights, trusted, dangerous, withInherited)) {
        found.push_back(right.name + " may write to " +
                        (right.onlyInherited ? NewObjectsIn(rights) : "") + rights.path);
    }
    return found;
}

} // namespace

std::vector<std::string> Weaknesses(const ObjectRights& rights, const TrustedSids& trusted)
{
    return Judge(rights, trusted, ChangeMaskOf(rights), true);
}

std::vector<std::string> WeaknessesOfParent(const ObjectRights& rights, const TrustedSids& trusted)
{
    return Judge(rights, trusted, ReplaceMaskOf(rights), false);
}

std::vector<GrantedRight> GrantsToReaders(const ObjectRights& rights, const TrustedSids& trusted)
{
    return DangerousGrants(rights, trusted, kRead | ChangeMaskOf(rights), true);
}

std::vector<std::string> Readers(const ObjectRights& rights, const TrustedSids& trusted)
{
    std::vector<std::string> found;
    for (const GrantedRight& right : DangerousGrants(rights, trusted, kRead, true)) {
        found.push_back(right.name + " may read " +
                        (right.onlyInherited ? NewObjectsIn(rights) : "") + rights.path);
    }
    return found;
}

std::vector<GrantedRight> GrantsToStrangers(const ObjectRights& rights, const TrustedSids& trusted)
{
    return DangerousGrants(rights, trusted, ChangeMaskOf(rights), true);
}

std::vector<GrantedRight> GrantsToStrangersOfParent(const ObjectRights& rights,
                                                    const TrustedSids& trusted)
{
    return DangerousGrants(rights, trusted, ReplaceMaskOf(rights), false);
}

} // namespace vqrx::client::v0
