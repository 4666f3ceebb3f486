#pragma once

#include "HeldProcess.h"
#include "Timeline.h"

#include <vector>

namespace vqrx::client::v0 {

/// Finds the former supervisors that run now although their program is not the installed one, for
/// example because a new version lies in another folder. Such a process has the name of the
/// supervisor's program, and has started a process that the log names. Each is kept open, so that
/// Windows does not give its id to another process meanwhile.
/// @param timeline  of the log; must be believed (TrustedSources), because whoever writes it could
///                  let the caller wait for any process of that name
/// @throws ProcessListUnreadable; std::bad_alloc
[[nodiscard]] std::vector<HeldProcess> SupervisorsElsewhere(const Timeline& timeline);

} // namespace vqrx::client::v0
