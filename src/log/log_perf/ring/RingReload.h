#pragma once

#include "log_perf/ring/LogHistoryEntry.h"

#include <cstdint>
#include <functional>
#include <istream>

namespace vqrx::log::log_perf::v2 {

/// Receives each record that was found, oldest first. The entry is valid only during the call.
using RecordFound = std::function<void(std::int64_t number, const LogHistoryEntry& entry)>;

/// Reads the records of a ring file and hands them out, oldest first. The older records lie from
/// the write position to the end of the file, the newer ones from the header to the write position.
/// 1. It reads the older records. The first complete line (kLogLineFields fields, a readable
///    number, no NUL) is not handed out: usually it is the remainder of an overwritten record. Its
///    number becomes the number of the first record that is handed out.
/// 2. It reads the newer records.
/// Each further record gets the next number. Without such a line the first number is 0. The number
/// in every other line is ignored. These lines are skipped and use up no number:
/// - a line before the first complete one,
/// - a line with fewer than kLogLineFields fields (LogLine.h),
/// - a line that holds a NUL,
/// - a line with a damaged time or level, in the older part, that stands directly after the first
///   complete line or begins beyond the size limit: it may be a remainder,
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
