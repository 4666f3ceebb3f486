#pragma once

#include "log_perf/ring/LogHistoryEntry.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vqrx::log::log_perf::v2 {

/// Number of fields in the line of a record. The last field is the text and may contain separators.
inline constexpr std::size_t kLogLineFields = 5;

/// Formats a record as "number;date;milliseconds;level;text", without a line end.
/// @throws std::bad_alloc
[[nodiscard]] std::string FormatLogLine(std::int64_t number, const LogHistoryEntry& entry);

/// Formats a record like FormatLogLine and appends it to the text. @throws std::bad_alloc
void AppendLogLine(std::string& text, std::int64_t number, const LogHistoryEntry& entry);

/// Splits a line at its separators ";" into at most kLogLineFields fields. Empty fields count, so
/// that joining the fields with ";" gives the line again.
/// @return views into the line
/// @throws std::bad_alloc
[[nodiscard]] std::vector<std::string_view> SplitLogLine(std::string_view line);

/// Splits a line like the function above. @param fields  overwritten; its memory is used again
void SplitLogLine(std::string_view line, std::vector<std::string_view>& fields);

/// Makes the entry of a line.
/// @param fields  the line's fields, kLogLineFields of them
/// @throws std::invalid_argument if the third or the fourth field is not a decimal number;
///         std::out_of_range if the third does not fit into 64 bits or the fourth into 32. The
///         texts are those of std::stoll and std::stoi. std::bad_alloc
[[nodiscard]] LogHistoryEntry ParseLogEntry(const std::vector<std::string_view>& fields);

/// Makes the entry of a line like the function above.
/// @param entry  overwritten, its memory is used again; unchanged if a field is refused
void ParseLogEntry(const std::vector<std::string_view>& fields, LogHistoryEntry& entry);

/// Parses the number of a record.
/// @param field  the first field of a line
/// @return the decimal number at the start of the field; nothing if there is none, as in a torn
///         line
[[nodiscard]] std::optional<std::int64_t> ParseRecordNumber(std::string_view field);

} // namespace vqrx::log::log_perf::v2
