#pragma once

#include "DaemonStatus.h"
#include "ExpectFile.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace vqrx::client::v0 {

/// Whether a daemon runs an expected program.
struct ExpectationResult {
    ExpectedProgram program;
    std::optional<std::size_t> daemon; ///< index of the daemon that runs it; nothing: none does
    std::string note;                  ///< why no daemon runs it; empty if one does
};

/// Finds a running daemon for each expected program. No daemon is used for two programs. A daemon
/// in a crash loop (RecentRestarts) does not count as running, even if it has a process. Pure.
/// @param nowMs        the current time, milliseconds since 1970, UTC
/// @param minUptimeMs  a process that is younger, in milliseconds, does not count as running
/// @return one result for each program, in the order of the programs
[[nodiscard]] std::vector<ExpectationResult>
CheckExpectations(const std::vector<ExpectedProgram>& programs,
                  const std::vector<DaemonStatus>& daemons, std::int64_t nowMs,
                  std::int64_t minUptimeMs);

} // namespace vqrx::client::v0
