#pragma once

#include <functional>

namespace vqrx::setup::v0 {

/// The two actions of a round of EndInRounds(). Their exceptions leave EndInRounds().
struct EndActions {
    /// Looks which supervisors run now, and ends them. Returns whether one ran.
    std::function<bool()> endSupervisors;
    /// Ends the guards. Gets what endSupervisors has returned: a guard ends by itself after its
    /// supervisor. Returns whether it had to end a guard that ran on.
    std::function<bool(bool)> endGuards;
};

/// Ends supervisors first and guards after them: if a supervisor cannot be ended, it still has its
/// guard. A guard that had to be ended may have started another supervisor just before its end, so
/// another round follows, until a round had no guard to end. Pure.
/// @throws SetupError if the tenth round still had one to end: somebody starts guards again and
///         again. Without a limit he could keep the machine without a supervisor
void EndInRounds(const EndActions& actions);

} // namespace vqrx::setup::v0
