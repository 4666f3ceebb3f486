#pragma once

#include "Timeline.h"

#include <cstdint>
#include <functional>

namespace vqrx::client::v0 {

/// The longest time, in milliseconds, that a record needs to reach the log after the call that it is
/// about. The supervisor writes records on a thread of its own.
inline constexpr std::uint64_t kLogPatienceMs = 10000;

/// Reads the log of the running supervisor until it shows something.
/// @param isShown  gets the run of the running supervisor
/// @return false if isShown is still false after kLogPatienceMs
/// @throws LogUnreadable as ReadTimeline() and RunOfThisMachine()
[[nodiscard]] bool WaitForLog(const std::function<bool(const SupervisorRun& run)>& isShown);

} // namespace vqrx::client::v0
