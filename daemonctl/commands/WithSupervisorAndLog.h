#pragma once

#include "WithSupervisor.h"

namespace vqrx::client::v0 {

/// The same as WithSupervisor for an operation that reads the log as well: kLogUnreadable when that
/// fails.
int WithSupervisorAndLog(const std::function<int(daemon_manager::SupervisorClient&)>& operation);

} // namespace vqrx::client::v0
