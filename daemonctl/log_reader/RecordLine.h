#pragma once

#include "Record.h"

#include <string_view>

namespace vqrx::client::v0 {

/// How much of a line could be understood.
enum class LineGrade {
    kWhole,    ///< exactly as the supervisor writes it
    kReadable, ///< time, level and text are there; number or date are damaged
    kUnreadable
};

struct RecordLine {
    LineGrade grade = LineGrade::kUnreadable;
    Record record; ///< empty when unreadable
};

/// Reads "number;date;milliseconds;level;text". Any bytes are allowed; never throws but for memory.
/// @param line  without its end
RecordLine ParseRecordLine(std::string_view line);

} // namespace vqrx::client::v0
