#pragma once

#include "Weaknesses.h"

#include <string>
#include <vector>

namespace vqrx::client::v0 {

/// Reads owner and access list of a file or a folder. Follows no link at the end of the path.
/// Windows only, as are the next functions.
/// @param path  UTF-8, a full path
[[nodiscard]] ObjectRights ReadRights(const std::string& path);

/// Says that a file has a second name, a hard link: somebody who could write to its folder before
/// may have given the name to a file of somebody else. Follows no link.
/// @param file  UTF-8, a full path
/// @return one sentence without a full stop; also if Windows does not open the file. Empty if it
///         has one name
[[nodiscard]] std::string SecondNameOf(const std::string& file);

/// Reads owner and access list of a registry key.
/// @param key  below HKEY_LOCAL_MACHINE, without a name of it: "SOFTWARE\X"
[[nodiscard]] ObjectRights ReadKeyRights(const std::string& key);

/// Returns the SIDs of SYSTEM, of the administrators, of Windows' own installer, and, if this
/// process has the full rights of an administrator, of its user: an administrator's own account
/// counts as an administrator.
[[nodiscard]] TrustedSids TrustedAdministrators();

/// Returns the name of an account, with its domain: "NT AUTHORITY\SYSTEM". UTF-8.
/// @param sid  as text: "S-1-5-18"
/// @return the SID itself if Windows knows no name for it
[[nodiscard]] std::string NameOfAccount(const std::string& sid);

/// Returns the full path of a file or a folder, and then the folders above it up to the root of the
/// drive. Asks Windows about the drive, but looks at nothing on the disk.
/// @param path  UTF-8; a relative path starts in the working folder. If "subst" made its drive, the
///              folder that the drive stands for takes the drive's place
/// @return empty for a path on a network, also below a network drive, and for a text that is no
///         path
[[nodiscard]] std::vector<std::string> WayTo(const std::string& path);

/// Returns why somebody who is not trusted can change a file or a folder, or put another object in
/// its place: its own weaknesses, and those of each folder above it.
/// @param path  UTF-8; a relative path starts in the working folder
/// @return one sentence for each reason; one for a path on a network, whose rights prove nothing
[[nodiscard]] std::vector<std::string> WeaknessesOfPath(const std::string& path,
                                                        const TrustedSids& trusted);

/// Returns why somebody who is not trusted can put another object in the place of one that lies in
/// this folder: weaknesses of the folder and of all above it, without the right to add something.
/// @param path  as for WeaknessesOfPath
[[nodiscard]] std::vector<std::string> WeaknessesOfParentPath(const std::string& path,
                                                              const TrustedSids& trusted);

} // namespace vqrx::client::v0
