#pragma once

#include "daemon_manager/SupervisorClient.h"

#include <functional>

namespace vqrx::client::v0 {

/// Connects, runs an operation, and turns what goes wrong into words on standard error and an exit
/// code (kNoSupervisor, kRefused).
int WithSupervisor(const std::function<int(daemon_manager::SupervisorClient&)>& operation);

} // namespace vqrx::client::v0
