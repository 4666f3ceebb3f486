#pragma once

#include "daemons/DaemonStatus.h"

#include <cstdint>
#include <optional>

namespace vqrx::client::v0 {

/// What is seen of one daemon at one moment.
struct Observation {
    bool known = false; ///< the log tells of it
    bool running = false;
    std::optional<std::uint32_t> processId; ///< of the process that runs
    std::int64_t startedMs = 0;             ///< together with the id: which process it is

    bool operator==(const Observation&) const = default;
};

enum class WaitFor { running, ended, restarted };

/// Looks for a daemon in the run that goes on.
Observation Observe(const SupervisorRun& run, std::uint32_t daemonId, const ProcessSource& source);

/// Whether what is waited for has come.
/// @param first  the first observation in which the daemon is known
bool IsFulfilled(WaitFor what, const Observation& first, const Observation& now);

} // namespace vqrx::client::v0
