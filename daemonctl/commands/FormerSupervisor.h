#pragma once

#include "SupervisorProcesses.h"

#include <cstdint>
#include <string>

namespace vqrx::client::v0 {

/// How a command waits for the end of a former supervisor.
struct FormerSupervisorWait {
    std::string command;              ///< the command's name, for texts
    bool dryRun = false;              ///< only say that the command would wait
    std::uint32_t timeoutSeconds = 0; ///< how long to wait at most; 0 looks once
};

/// Waits until one supervisor runs at most: the one that answers, which is the youngest. A former
/// supervisor restarts its daemons until it ends, although clients find it no longer. So its
/// process must end before another supervisor gets its daemons. Says on standard error for which
/// processes it waits, and if they have not ended in time.
/// @return whether at most one runs; true also for a dry run
/// @throws the exceptions of SupervisorProcesses::Running()
[[nodiscard]] bool WaitForFormerSupervisor(const SupervisorProcesses& processes,
                                           const FormerSupervisorWait& wait);

} // namespace vqrx::client::v0
