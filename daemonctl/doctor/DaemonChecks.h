#pragma once

#include "Finding.h"

#include <cstddef>
#include <string>
#include <vector>

namespace vqrx::client::v0 {

/// A daemon of the running supervisor that does not do its work. Texts are UTF-8.
struct TroubledDaemon {
    std::string command;      ///< path and arguments
    bool cannotStart = false; ///< true: no start succeeds; false: it ends again and again
    std::size_t restartsLastHour = 0;
    std::string lastExit; ///< reason of the last end; empty: not known
};

/// The daemons of the running supervisor.
struct DaemonFacts {
    bool known = false; ///< false: no supervisor runs, or its log cannot be read
    std::size_t count = 0;
    std::vector<TroubledDaemon> troubled;
};

/// The check "daemons": whether every daemon can be started and stays. Pure.
[[nodiscard]] Finding JudgeDaemons(const DaemonFacts& facts);

} // namespace vqrx::client::v0
