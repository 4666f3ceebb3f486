#pragma once

#include "FormerChildren.h"
#include "GuardLog.h"
#include "TryRecords.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace vqrx::guard::v0 {

/// What TakeOver() needs to know.
struct TakeOverOrder {
    /// Supervisors that have ended while this guard watched them.
    std::vector<client::v0::FormerSupervisor> formerSupervisors;
    /// See client::v0::StartOfSupervisor; nothing: the guard did not start the supervisor.
    std::optional<std::int64_t> lastNumberBefore;
    std::string fleet; ///< path of the fleet file, UTF-8
    /// Whether the file must exist: it was named by the operator. The default file need not.
    bool fleetNamed = false;
    /// Whether a guard with the rights of an administrator believes a log and a fleet file that
    /// others may change.
    bool trust = false;
    /// Becomes true when the supervisor that ran at the beginning of the function has ended. The
    /// function then does nothing to the next supervisor. Never null.
    std::shared_ptr<const std::atomic<bool>> isAbandoned = std::make_shared<std::atomic<bool>>();
    /// The daemon that an earlier try for this supervisor attached, if the log did not show it.
    /// TakeOver() attaches nothing until the log shows it. Never null; one thread at a time.
    std::shared_ptr<std::optional<std::uint32_t>> unshownId =
        std::make_shared<std::optional<std::uint32_t>>();
    /// The lines of the fleet file that an earlier try for this supervisor launched, attached or
    /// found registered. If one has no daemon now, somebody has stopped or detached it, and a later
    /// try leaves it so. Never null; one thread at a time.
    std::shared_ptr<std::set<std::string>> placed = std::make_shared<std::set<std::string>>();
    /// What the tries for this supervisor logged. Never null; one thread at a time.
    std::shared_ptr<TryRecords> records = std::make_shared<TryRecords>();
};

/// Gives the running supervisor its daemons. Logs each step that differs from the try before.
/// Catches its exceptions.
/// 1. Waits until the process of a former supervisor has ended, at most two minutes.
/// 2. Attaches the daemons of former supervisors that still run.
/// 3. Launches the programs of the fleet file that do not run.
/// @return whether nothing is left that a later try could mend
[[nodiscard]] bool TakeOver(const TakeOverOrder& order, GuardLog& log) noexcept;

} // namespace vqrx::guard::v0
