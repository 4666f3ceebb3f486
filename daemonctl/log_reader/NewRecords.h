#pragma once

#include "Record.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace vqrx::client::v0 {

/// The records of a log that were not shown before.
struct NewRecords {
    std::size_t first = 0; ///< index of the first new record
    bool lost = false;     ///< records between the last shown and the first new one are missing
    std::optional<std::uint64_t> lostCount; ///< how many; nothing if the numbers do not show it
    bool isNewLog = false; ///< the supervisor began a new log file: no shown record is in it
};

/// Finds the first record of a log after the records that were shown. Numbers alone do not decide:
/// a supervisor that starts may use numbers again, and a second supervisor that is refused writes
/// its own records between those of the first. Pure.
/// @param shown    the records shown last, in the order of writing; empty if none was shown. Pass
///                 as many as a ring can hold: the ring may have overwritten the last of them, and
///                 the function then looks for an earlier one
/// @param records  all records of the log, in the order of writing
[[nodiscard]] NewRecords FindNew(const std::vector<Record>& shown,
                                 const std::vector<Record>& records);

} // namespace vqrx::client::v0
