#pragma once

#include "Record.h"

#include <string_view>

namespace vqrx::client::v0 {

/// How much of a line could be read.
enum class LineGrade {
    kWhole,     ///< exactly as the supervisor writes it
    kReadable,  ///< time, level and text; number or date are damaged
    kUnreadable ///< no record
};

/// A line of the log file after reading.
struct RecordLine {
    LineGrade grade = LineGrade::kUnreadable;
    Record record; ///< empty if the line is unreadable
};

/// Reads one line of the log file: "number;date;milliseconds;level;text".
/// @param line  any bytes, without the line end
/// @throws std::bad_alloc, nothing else
[[nodiscard]] RecordLine ParseRecordLine(std::string_view line);

} // namespace vqrx::client::v0
