#pragma once

#include "DaemonStatus.h"
#include "Reporter.h"

#include <cstdint>

namespace vqrx::client::v0 {

/// Ends the process of a daemon, launched or attached, in the steps in which the supervisor ends
/// the process of a launched daemon. Then waits until the supervisor has started the program again.
/// A daemon without a process is only waited for.
/// @param daemon     of the running supervisor
/// @param timeoutMs  milliseconds to wait for the start
/// @param reporter   gets one line about the result, and before it lines about waits
/// @return whether a new process of the daemon runs
/// @throws LogUnreadable; ProcessListUnreadable; std::bad_alloc
[[nodiscard]] bool RestartDaemon(const DaemonStatus& daemon, std::uint64_t timeoutMs,
                                 const Reporter& reporter);

} // namespace vqrx::client::v0
