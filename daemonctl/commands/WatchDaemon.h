#pragma once

#include "WaitCondition.h"

#include <cstdint>
#include <functional>

namespace vqrx::client::v0 {

/// Why WatchDaemon returned.
enum class WatchEnd { kFulfilled, kTimeOver, kSupervisorEnded };

/// Returns whether the watch has reached its aim.
/// @param first  the first observation in which the daemon is known
/// @param now    the latest observation
using WatchAim = std::function<bool(const Observation& first, const Observation& now)>;

/// Observes a daemon of the running supervisor five times a second, until the aim is reached, the
/// time is over, or the supervisor has ended. The next supervisor gives the same ids to other
/// daemons, so its daemons do not count. Looks at least once.
/// @param seconds  time to watch at most
/// @param source   asked about the processes of the machine
/// @param now      gets the last observation
/// @throws LogUnreadable; the exceptions of `reached`
[[nodiscard]] WatchEnd WatchDaemon(std::uint32_t daemonId, std::uint32_t seconds,
                                   const ProcessSource& source, const WatchAim& reached,
                                   Observation& now);

} // namespace vqrx::client::v0
