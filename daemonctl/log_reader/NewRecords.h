#pragma once

#include "Record.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace vqrx::client::v0 {

/// What a log holds now that was not shown before.
struct NewRecords {
    std::size_t first = 0; ///< index of the first new record
    bool lost = false;     ///< records between the last shown and the first new one are gone
    std::optional<std::uint64_t> lostCount; ///< nothing when the numbers do not tell
    bool isNewLog = false; ///< the supervisor began a new log file: no shown record is in it
};

/// Finds where a log goes on behind the record that was shown last. Numbers alone do not tell: a
/// supervisor that starts may give them out anew, and one that is refused may write in between.
/// @param last     the record shown last; nothing at the beginning
/// @param records  all that the log holds now, in order
NewRecords FindNew(const std::optional<Record>& last, const std::vector<Record>& records);

} // namespace vqrx::client::v0
