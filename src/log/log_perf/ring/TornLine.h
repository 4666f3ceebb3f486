#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace vqrx::log::log_perf::v2 {

/// Bytes that a disk writes as a whole. After a power failure a sector has its old or its new
/// bytes.
inline constexpr std::uint64_t kSectorSize = 512;

/// Returns whether a cut of the file or a power failure can have damaged a line. Call it for a line
/// whose time or level is no number. If it returns false, somebody has changed a record. It returns
/// true in two cases:
/// - A sector begins in the number, the date, the time or the level. Then the parts of the line may
///   come from two records.
/// - The line does not begin as a record does. Then it is the remainder of a record whose front is
///   overwritten. A record begins with its number, and one of these is true: a date follows, the
///   number is one higher than previousNumber, or the record is the first one of the file.
/// @param fields          kLogLineFields fields, views into one line
/// @param start           offset of the line in the file, bytes
/// @param previousNumber  number in the record before the line; nothing if there is none
[[nodiscard]] bool MayBeTorn(const std::vector<std::string_view>& fields, std::uint64_t start,
                             std::optional<std::int64_t> previousNumber) noexcept;

} // namespace vqrx::log::log_perf::v2
