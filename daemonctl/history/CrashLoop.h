#pragma once

#include "Timeline.h"

#include <cstddef>
#include <cstdint>

namespace vqrx::client::v0 {

/// How often the supervisor restarted a daemon lately. A daemon that is restarted again and again
/// is in a crash loop, even if it has a process at this moment.
struct RecentRestarts {
    /// A daemon with this many restarts in the last ten minutes is in a crash loop. One that ends
    /// every two minutes has this many.
    static constexpr std::size_t kCrashLoop = 5;

    std::size_t lastHour = 0;       ///< restarts in the last 60 minutes
    std::size_t lastTenMinutes = 0; ///< restarts in the last 10 minutes

    /// Returns whether the daemon is in a crash loop.
    [[nodiscard]] bool IsCrashLoop() const noexcept { return lastTenMinutes >= kCrashLoop; }
};

/// Counts the restarts of a daemon that the log still shows. A restart that lies more than a minute
/// in the future does not count: it was logged before somebody set the clock back. Pure.
/// @param nowMs  the moment to count back from, milliseconds since 1970, UTC
[[nodiscard]] RecentRestarts RestartsBefore(const DaemonHistory& daemon, std::int64_t nowMs);

} // namespace vqrx::client::v0
