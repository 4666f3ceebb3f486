#pragma once

#include "DaemonStatus.h"
#include "ExpectFile.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace vqrx::client::v0 {

/// Whether a program that must run does.
struct ExpectationResult {
    ExpectedProgram program;
    std::optional<std::size_t> daemon; ///< the one that runs it; nothing: none does
    std::string note;                  ///< without a daemon: why
};

/// Finds a daemon of its own for each program. Pure.
/// @param minUptimeMs  one that has not run for so long does not count
std::vector<ExpectationResult> CheckExpectations(const std::vector<ExpectedProgram>& programs,
                                                 const std::vector<DaemonStatus>& daemons,
                                                 std::int64_t nowMs, std::int64_t minUptimeMs);

} // namespace vqrx::client::v0
