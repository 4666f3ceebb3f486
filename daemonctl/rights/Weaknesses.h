#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <vector>

namespace vqrx::client::v0 {

/// A right that the access list of an object grants.
struct GrantedRight {
    std::string sid;        ///< "S-1-1-0"
    std::string name;       ///< "Everyone"; the SID if it has no name
    std::uint32_t mask = 0; ///< the access rights, as Windows numbers them
    /// True: it is no right to this folder. Each new file or folder in it gets the right.
    bool onlyInherited = false;
};

/// Owner and access list of a file, a folder or a registry key. Texts are UTF-8.
struct ObjectRights {
    enum class Kind { kFile, kFolder, kRegistryKey };

    std::string path;
    Kind kind = Kind::kFile;
    /// Windows error of reading the rights; 0: read. If it is not 0, all members below are unset.
    std::uint32_t error = 0;
    bool reparsePoint = false; ///< a junction or a link: the path leads somewhere else
    std::string ownerSid;
    std::string ownerName;
    bool unprotected = false; ///< without an access list: everybody may do everything
    std::vector<GrantedRight> granted;
};

/// Who may change an object without being an intruder, by SID.
using TrustedSids = std::set<std::string>;

/// Says why somebody who is not trusted can change an object. Pure.
/// @param trusted  those who may own and change the object
/// @return one sentence for each reason, UTF-8, without a full stop: "Everyone may write to C:\FW";
///         empty if nobody else can
[[nodiscard]] std::vector<std::string> Weaknesses(const ObjectRights& rights,
                                                  const TrustedSids& trusted);

/// Returns the granted rights with which somebody who is not trusted can change an object, the
/// first one of each SID. Pure.
[[nodiscard]] std::vector<GrantedRight> GrantsToStrangers(const ObjectRights& rights,
                                                          const TrustedSids& trusted);

/// Says who else can read an object, as Weaknesses() says who can change it: the log is for
/// administrators and the supervisor alone. Pure.
/// @return empty also if the rights could not be read
[[nodiscard]] std::vector<std::string> Readers(const ObjectRights& rights,
                                               const TrustedSids& trusted);

/// Returns the granted rights with which somebody who is not trusted can read or change an object,
/// the first one of each SID. Pure.
[[nodiscard]] std::vector<GrantedRight> GrantsToReaders(const ObjectRights& rights,
                                                        const TrustedSids& trusted);

/// Returns the granted rights with which somebody who is not trusted can put another object in the
/// place of one that lies below this folder, the first one of each SID. Pure.
[[nodiscard]] std::vector<GrantedRight> GrantsToStrangersOfParent(const ObjectRights& rights,
                                                                  const TrustedSids& trusted);

/// Says why somebody who is not trusted can put another object in the place of one that lies below
/// this folder. As Weaknesses(), but the right to make new files and folders does no harm here: on
/// many Windows machines everybody may make folders in the root of a drive. Pure.
[[nodiscard]] std::vector<std::string> WeaknessesOfParent(const ObjectRights& rights,
                                                          const TrustedSids& trusted);

} // namespace vqrx::client::v0
