#pragma once

#include "Reattachment.h"

#include <string>
#include <vector>

namespace vqrx::client::v0 {

// The supervisor starts programs with its own rights. So an administrator must neither attach nor
// launch what somebody with lesser rights has chosen.

/// Returns whether this process may believe the log and other files. A process without the full
/// rights of an administrator may: it can hand nobody more rights than he has. Otherwise prints on
/// standard error who else may have written them.
/// @param files  paths of the listing, of a former log and of a fleet file, UTF-8; an empty path is
///               none
/// @throws std::runtime_error if the registry does not name the firmware root
[[nodiscard]] bool CanBelieve(const std::vector<std::string>& files);

/// Returns whether this process may launch what a fleet file names, as CanBelieve().
/// @param file  UTF-8
[[nodiscard]] bool CanBelieveFleet(const std::string& file);

/// Shows the programs outside the folder App that would be attached, and asks the operator on the
/// console. Without a yes they become Plan::kLost. Asks nothing if this process is no
/// administrator.
/// @throws std::runtime_error if the registry does not name the firmware root
void AskAboutOutside(std::vector<FormerDaemon>& plan);

} // namespace vqrx::client::v0
