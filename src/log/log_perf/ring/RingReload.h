#pragma once

#include "log_perf/ring/LogHistoryEntry.h"

#include <cstdint>
#include <functional>
#include <istream>

namespace vqrx::log::log_perf::v2 {

/// Receives each record that was found, oldest first. The entry is valid only during the call.
using RecordFound = std::function<void(std::int64_t number, const LogHistoryEntry& entry)>;

/// Reads the records of a ring file. The older records lie after the write position, the newer ones
/// before it. A line with fewer than kLogLineFields fields is skipped.
/// 1. It reads the older records. It takes the number of the first complete line (one with all fields,
///    a readable number and no NUL) and leaves that
///    line out, because the line is usually the remainder of an overwritten record.
/// 2. It reads the newer records.
/// The records get consecutive numbers from that first number on, or from 0 if there is no older
/// line. The numbers written in the other lines are ignored.
/// These lines are no records and are skipped:
/// - a line that holds a NUL,
/// - a line with a damaged time or level that may be the remainder of an overwritten record: the line
///   after the one that was left out, and a line beyond the size limit,
/// - a line with a damaged time or level that may be torn, see MayBeTorn.
/// Any other line with a damaged time or level is an error.
/// @param file           binary, not bad(); read from the write position and again from the start
/// @param writePosition  result of ReadRingHeader
/// @param sizeLimit      size limit of the ring file, bytes; 0: none
/// @return the number of the next record to write. If the file is bad() after the call, some of its
///         bytes could not be read: records are missing, and the number is wrong. If it throws, the
///         records handed out so far stay handed out, and the state of the stream is undefined
/// @throws std::invalid_argument, std::out_of_range as ParseLogEntry does; std::bad_alloc; the
///         exceptions of recordFound
[[nodiscard]] std::int64_t ReloadRing(std::istream& file, std::uint32_t writePosition,
                                      std::uint32_t sizeLimit, const RecordFound& recordFound);

} // namespace vqrx::log::log_perf::v2
