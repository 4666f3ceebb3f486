#pragma once

#include "Weaknesses.h"
#include "daemon_manager/SupervisorIdentity.h"

#include <string>
#include <vector>

namespace vqrx::client::v0 {

/// Whether this process has the full rights of an administrator.
[[nodiscard]] bool IsElevated() noexcept;

/// Returns the account of the supervisor, by its SID, as the processes of its name show it. Pure.
/// @return empty if no expected user runs the installed program, or if two of them do. Everybody
///         may run it: an expected user of few rights could start it beside the supervisor, and
///         then have an administrator believe a log of his
[[nodiscard]] TrustedSids
AccountOfSupervisor(const std::vector<daemon_manager::SupervisorProcess>& processes);

/// Returns why somebody else than administrators and the account of the running supervisor can
/// change a file that names processes: a listing, or the log. Windows only.
/// @param path  UTF-8
/// @return as WeaknessesOfPath()
[[nodiscard]] std::vector<std::string> WeaknessesOfSource(const std::string& path);

/// Returns whether a program lies below a folder. Letter case does not count. Pure.
/// @param program, folder  full paths, UTF-8
[[nodiscard]] bool IsBelow(const std::string& program, const std::string& folder);

} // namespace vqrx::client::v0
