#pragma once

#include "Attribution.h"

#include <cstdint>
#include <optional>
#include <string>

namespace vqrx::client::v0 {

/// Which records are wanted: those that meet every condition that is set.
struct RecordFilter {
    std::optional<int> level; ///< not above it
    std::optional<std::int64_t> sinceMs;
    std::optional<std::uint32_t> daemonId; ///< about this daemon
    std::string contains; ///< in the text; the case of ASCII letters does not count

    bool Accepts(const AttributedRecord& attributed) const;
};

} // namespace vqrx::client::v0
