#pragma once

#include "Attribution.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace vqrx::client::v0 {

/// Conditions for records to show. A record must meet every condition that is set.
struct RecordFilter {
    std::optional<int> level;              ///< the record's level is at most this
    std::optional<std::int64_t> sinceMs;   ///< earliest time, milliseconds since 1970, UTC
    std::optional<std::uint32_t> daemonId; ///< the record is about this daemon
    /// The record is about a daemon whose command (Event::command) this function accepts. Unlike an
    /// id, a command means the same daemon in each run of the supervisor.
    std::function<bool(const std::string& command)> command;
    /// Part of the text; letter case does not matter (WithoutCase). Empty: not set.
    std::string contains;

    /// Returns whether the record meets the conditions.
    [[nodiscard]] bool Accepts(const AttributedRecord& attributed) const;
};

} // namespace vqrx::client::v0
