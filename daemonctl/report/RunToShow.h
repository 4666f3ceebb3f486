#pragma once

#include "DaemonStatus.h"
#include "Timeline.h"

#include <cstdint>
#include <unordered_map>
#include <vector>

namespace vqrx::client::v0 {

/// One run of the supervisor, as the report shows it: up to its last record, or up to now.
struct RunToShow {
    const SupervisorRun& run;
    bool hasEnded = false;
    std::int64_t endMs = 0; ///< milliseconds since 1970, UTC
    /// The daemons as they are now, by id; empty if nobody looked.
    std::unordered_map<std::uint32_t, const DaemonStatus*> now = {};
    /// The processes that run now, and whose start the log does not show; empty if nobody looked.
    std::vector<const DaemonStatus*> children = {};

    /// Adds what a look at the processes has found. @param daemons  must outlive this object
    void Look(const std::vector<DaemonStatus>& daemons)
    {
        for (const DaemonStatus& daemon : daemons) {
            if (daemon.id) {
                now.emplace(*daemon.id, &daemon);
            }
            if (!daemon.inLog) {
                children.push_back(&daemon);
            }
        }
    }

    /// Returns the present state of a daemon; null if nobody looked, or the supervisor lacks it.
    [[nodiscard]] const DaemonStatus* Now(std::uint32_t daemonId) const
    {
        const auto found = now.find(daemonId);
        return found == now.end() ? nullptr : found->second;
    }
};

} // namespace vqrx::client::v0
