#pragma once

#include "Reattachment.h"

#include <string>
#include <vector>

namespace vqrx::client::v0 {

// The supervisor starts an attached program again with its own rights. So an administrator must not
// attach what somebody with lesser rights has chosen.

/// Returns whether this process may believe the log and other files. A process without the full rights of
/// an administrator may: it can hand nobody more rights than he has. Otherwise prints on standard error
/// who else may have written them.
/// @param files  paths of the listing and of a former log, UTF-8; an empty path is none
/// @throws std::runtime_error if the registry does not name the firmware root
[[nodiscard]] bool CanBelieve(const std::vector<std::string>& files);

/// Shows the programs outside the folder App that would be attached, and asks the operator on the
/// console. Without a yes they become Plan::lost. Asks nothing if this process is no administrator.
/// @throws std::runtime_error if the registry does not name the firmware root
void AskAboutOutside(std::vector<FormerDaemon>& plan);

} // namespace vqrx::client::v0
