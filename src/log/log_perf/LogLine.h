#pragma once

#include "log_perf/LogHistoryEntry.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vqrx::log::log_perf::v2 {

/// A record's line has so many fields. The last one is the text, further separators included.
inline constexpr std::size_t kLogLineFields = 5;

/// "number;date;milliseconds;level;text", without a line end.
std::string FormatLogLine(std::int64_t number, const LogHistoryEntry& entry);

/// The same, behind what the text holds already.
void AppendLogLine(std::string& text, std::int64_t number, const LogHistoryEntry& entry);

/// The fields of a line, kLogLineFields at most, empty ones included, so that joining them with ";"
/// restores the line.
std::vector<std::string_view> SplitLogLine(std::string_view line);

/// The same, into a list that is used again and again.
void SplitLogLine(std::string_view line, std::vector<std::string_view>& fields);

/// The entry of a line that has been split into kLogLineFields fields.
/// @throws std::invalid_argument, std::out_of_range  when the third field is no 64-bit or the
/// fourth
///         no 32-bit decimal number; texts as the standard conversions'
LogHistoryEntry ParseLogEntry(const std::vector<std::string_view>& fields);

/// The same, into an entry that is used again and again; left as it was when it throws.
void ParseLogEntry(const std::vector<std::string_view>& fields, LogHistoryEntry& entry);

/// The record's number: the decimal number that the first field begins with; nothing for a field
/// that does not begin with one, which is what a torn line looks like.
std::optional<std::int64_t> ParseRecordNumber(std::string_view field);

} // namespace vqrx::log::log_perf::v2
