#pragma once

#include "Conversation.h"
#include "FormerProcess.h"
#include "SupervisorChange.h"

#include <string>
#include <vector>

namespace vqrx::setup::v0 {

/// Starts the guard that is set up, after an installation, or after a removal that failed. A guard
/// of a session gets the account and the rights that it had. If no guard of the supervisor's
/// account ran, it gets the rights of the supervisor. With the rights of the installer, it would
/// give them to each supervisor that it starts. If no supervisor ran either, the guard of the noted
/// account counts as the former one, or else a guard of this user, or else any guard.
class GuardRestart {
public:
    /// Notes the rights of the guards that run and are no service.
    /// @param folder  folder of the guard's program, UTF-8; empty: there is none
    /// @throws SetupError if a guard cannot be opened
    explicit GuardRestart(const std::string& folder);

    /// Whether Start() would start a guard of a session with other rights than those of this
    /// process.
    /// @param change  the supervisor that was replaced, if one ran
    [[nodiscard]] bool HasOtherRights(const SupervisorChange& change) const;

    /// Starts the guard. Does nothing if none is set up, or if one runs already.
    /// @param change  the supervisor that was replaced, if one ran
    /// @return false if it failed; the conversation has the reason
    /// @throws SetupError if daemonctl cannot be started; std::runtime_error if Windows does not
    ///         show which guard is set up
    [[nodiscard]] bool Start(const SupervisorChange& change, Conversation& conversation) const;

private:
    [[nodiscard]] const FormerProcess* Former(const SupervisorChange& change) const;
    [[nodiscard]] const FormerProcess* OfAccount(const std::string& sid) const;

    std::vector<FormerProcess> guards_;
};

} // namespace vqrx::setup::v0
