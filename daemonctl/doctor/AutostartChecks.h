#pragma once

#include "Autostart.h"
#include "Finding.h"
#include "SessionChecks.h"

#include <string>
#include <vector>

namespace vqrx::client::v0 {

/// How the supervisor is started at power-on, and what the guard launches then. Texts are UTF-8.
struct AutostartFacts {
    std::string error; ///< why Windows does not tell; empty: no error
    std::vector<AutostartEntry> entries;
    // The other members are set if there is one entry whose command line starts a guard.
    GuardCommand command;
    bool programThere = false; ///< false: the guard's program does not exist
    std::string fleet;         ///< path of the fleet file
    bool fleetThere = false;   ///< false: the file does not exist; fleetErrors: it is unreadable
    std::vector<std::string> fleetErrors;   ///< "line 3: ..."; then nothing is launched
    std::vector<std::string> fleetWarnings; ///< "line 3: ..."; a program does not exist
    std::size_t fleetPrograms = 0;          ///< lines with a program
    // Why others than administrators can change the files. A guard with the rights of an
    // administrator then does not believe them.
    std::vector<std::string> fleetWeaknesses;
    std::vector<std::string> logWeaknesses; ///< of the supervisor's log
    SessionFacts session;                   ///< set if UsesSession()
};

/// The check "autostart": whether and how Windows starts the guard, which starts the supervisor.
/// Pure.
[[nodiscard]] Finding JudgeAutostart(const AutostartFacts& facts);

/// Returns whether Windows starts the guard when a user logs on, and in no other way, so that the
/// check "session" makes sense. Pure.
[[nodiscard]] bool UsesSession(const AutostartFacts& facts);

/// Returns whether a guard will look for a fleet file, so that the check "fleet-file" makes sense.
/// Pure.
[[nodiscard]] bool UsesFleetFile(const AutostartFacts& facts);

/// The check "fleet-file": whether the guard can launch what its fleet file names. Pure.
[[nodiscard]] Finding JudgeFleetFile(const AutostartFacts& facts);

} // namespace vqrx::client::v0
