#pragma once

#include "Attribution.h"

#include <cstdint>
#include <optional>
#include <string>

namespace vqrx::client::v0 {

/// Conditions for records to show. A record must meet every condition that is set.
struct RecordFilter {
    std::optional<int> level;              ///< the record's level is at most this
    std::optional<std::int64_t> sinceMs;   ///< earliest time, milliseconds since 1970
    std::optional<std::uint32_t> daemonId; ///< the record is about this daemon
    std::string contains; ///< part of the text; the case of ASCII letters does not matter

    /// Returns whether the record meets the conditions.
    [[nodiscard]] bool Accepts(const AttributedRecord& attributed) const;
};

} // namespace vqrx::client::v0
