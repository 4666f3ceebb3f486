#pragma once

#include "Finding.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace vqrx::client::v0 {

/// A daemon of the running supervisor that does not do its work. Texts are UTF-8.
struct TroubledDaemon {
    std::optional<std::uint32_t> id; ///< nothing: no record of the log shows it
    std::string command;             ///< path and arguments
    /// What is wrong with it.
    enum class Kind {
        kEndsAgainAndAgain,
        kCannotStart, ///< no start succeeds
        kLeftEnded    ///< it has ended, and the supervisor does not start it again
    };
    Kind kind = Kind::kEndsAgainAndAgain;
    std::size_t restartsLastHour = 0;
    std::string lastExit; ///< reason of the last end; empty: not known
    /// Why no start succeeds (WarningsAboutPath), a sentence each; empty: not known.
    std::vector<std::string> obstacles;
};

/// The daemons of the running supervisor.
struct DaemonFacts {
    bool known = false; ///< false: no supervisor runs, or its log cannot be read
    std::size_t count = 0;
    std::vector<TroubledDaemon> troubled;
    std::size_t unwatched = 0; ///< programs of former supervisors that reattach would take over
};

/// The check "daemons": whether every daemon can be started and stays, and whether no program of a
/// former supervisor runs unwatched. Pure.
[[nodiscard]] Finding JudgeDaemons(const DaemonFacts& facts);

} // namespace vqrx::client::v0
