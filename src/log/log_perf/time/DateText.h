#pragma once

#include "log_perf/time/Timestamp.h"

#include <array>
#include <string>
#include <string_view>

namespace vqrx::log::log_perf::v2 {

/// Formats a time as sinks write it: local time, "Mon Nov 16 03:52:36.123" (23 characters). If the
/// C runtime cannot express the time, the result is "??? ??? ?? ??:??:??." and the milliseconds.
/// @throws std::bad_alloc
[[nodiscard]] std::string DateText(const Timestamp& timestamp);

/// Formats like DateText, for a series of records: keeps the text of the second, so that only the
/// milliseconds are formatted for further records of that second. One thread; allocates nothing.
class DateTextOfSecond {
public:
    /// @return a view into this object, valid until the next call
    [[nodiscard]] std::string_view Of(const Timestamp& timestamp);

private:
    std::array<char, 32> text_{};
    std::size_t secondsLength_ = 0; // length in text_ up to the point, included; 0: nothing yet
    std::int64_t second_ = 0;       // the second that text_ shows
};

} // namespace vqrx::log::log_perf::v2
