#pragma once

#include <windows.h>

#include <string>

namespace vqrx::setup::v0 {

/// What decides the rights of a process: its user, its integrity level, its groups and privileges,
/// and its desktop session.
struct AccessRights {
    std::string userSid;        ///< empty: the rights could not be read
    bool administrator = false; ///< may use the rights of administrators, or is SYSTEM
    DWORD session = 0;          ///< the desktop session
    /// Integrity level, groups and privileges, one each line. Groups that only say how the user
    /// logged on are left out. Privileges count whether they are switched on or not.
    std::string details;

    [[nodiscard]] bool operator==(const AccessRights&) const = default;
};

/// Reads the rights of an access token.
/// @param token  opened with TOKEN_QUERY
[[nodiscard]] AccessRights RightsOfToken(HANDLE token);

/// Reads the rights of a process.
/// @param process  opened with PROCESS_QUERY_LIMITED_INFORMATION, or the pseudo-handle of this
///                 process
[[nodiscard]] AccessRights RightsOfProcess(HANDLE process);

/// Returns the name of the account for people: "DOMAIN\name (limited)", or with "(administrator)".
/// UTF-8.
[[nodiscard]] std::string NameOfRights(const AccessRights& rights);

} // namespace vqrx::setup::v0
