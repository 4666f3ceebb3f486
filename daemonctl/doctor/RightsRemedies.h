#pragma once

#include "RightsChecks.h"

#include <string>
#include <vector>

namespace vqrx::client::v0 {

/// Returns the commands after which only administrators may change a place, one a line, for the
/// command interpreter and for PowerShell. No command contains a name that is unsafe to paste. A
/// folder keeps the right of users to read and to execute; \Logs is for administrators and the
/// supervisor's account alone. Pure.
/// @param trusted        those who may change the place
/// @param supervisorSid  gets full access to \Logs; empty: not known
/// @return sentences where no command helps; nothing if the place has no weakness, and the log and
///         its folder no reader
[[nodiscard]] std::vector<std::string>
RemediesFor(const PlaceFacts& place, const TrustedSids& trusted, const std::string& supervisorSid);

/// Returns the commands of PowerShell that give a registry key of the installation the rights that
/// an administrator's key has, one a line. Pure.
/// @return a sentence for a key of Windows itself
[[nodiscard]] std::vector<std::string> RemediesForKey(const ObjectRights& key);

} // namespace vqrx::client::v0
