#pragma once

#include "log_perf/LogHistoryEntry.h"

#include <cstdint>
#include <functional>
#include <istream>

namespace vqrx::log::log_perf::v2 {

/// Called for each record found, which is borrowed for the call, in the order in which they were
/// written.
using RecordFound = std::function<void(std::int64_t number, const LogHistoryEntry& entry)>;

/// Reads the records of a ring file: first the older ones behind the write position, then the newer
/// ones before it. Numbers are handed out consecutively, beginning with the number of the first
/// complete-looking line behind the write position; that line itself is left out, since it is
/// usually what the wrap has torn. The numbers in the later lines are not looked at.
/// @param file           binary; read from the write position and again from the start
/// @param writePosition  as ReadRingHeader gave it
/// @param sizeLimit      where the ring turns, bytes; 0 where it never does
/// @return the number that the next record gets
/// @throws std::invalid_argument, std::out_of_range as ParseLogEntry does
std::int64_t ReloadRing(std::istream& file, std::uint32_t writePosition, std::uint32_t sizeLimit,
                        const RecordFound& recordFound);

} // namespace vqrx::log::log_perf::v2
