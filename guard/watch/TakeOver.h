#pragma once

#include "FormerChildren.h"
#include "GuardLog.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace vqrx::guard::v0 {

/// What TakeOver() needs to know.
struct TakeOverOrder {
    /// Supervisors that have ended while this guard watched them.
    std::vector<client::v0::FormerSupervisor> formerSupervisors;
    std::string fleet; ///< path of the fleet file, UTF-8
    /// Whether the file must exist: it was named by the operator. The default file need not.
    bool fleetNamed = false;
    /// Whether a guard with the rights of an administrator believes a log and a fleet file that
    /// others may change.
    bool trust = false;
    /// Becomes true when the supervisor has ended that was running at the begin of the function.
    /// The function then does nothing to the next supervisor. Never null.
    std::shared_ptr<const std::atomic<bool>> isAbandoned = std::make_shared<std::atomic<bool>>();
    /// The daemon that an earlier try for this supervisor attached, if the log did not show it.
    /// TakeOver() attaches nothing until the log shows it. Never null; one thread at a time.
    std::shared_ptr<std::optional<std::uint32_t>> unshownId =
        std::make_shared<std::optional<std::uint32_t>>();
};

/// Gives the running supervisor what it should have: first the daemons of former supervisors that
/// still run, then what the fleet file names and nobody runs. Waits first until the process of a
/// former supervisor has ended, at most two minutes. Logs each step. Catches its exceptions.
/// @return whether nothing is left that a later try could mend
[[nodiscard]] bool TakeOver(const TakeOverOrder& order, GuardLog& log) noexcept;

} // namespace vqrx::guard::v0
