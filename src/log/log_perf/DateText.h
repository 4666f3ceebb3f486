#pragma once

#include "log_perf/Timestamp.h"

#include <array>
#include <string>
#include <string_view>

namespace vqrx::log::log_perf::v2 {

/// Local time as sinks write it: "Mon Nov 16 03:52:36.123" (23 characters). A time that the C
/// runtime cannot express reads "??? ??? ?? ??:??:??" before the milliseconds.
std::string DateText(const Timestamp& timestamp);

/// The same for records that come one after another: what is the same for the whole second is made
/// once. One thread.
class DateTextOfSecond {
public:
    /// Valid until the next call.
    std::string_view Of(const Timestamp& timestamp);

private:
    std::array<char, 32> text_{};
    std::size_t secondsLength_ = 0; // of text_, the point included; 0 when it says nothing yet
    std::int64_t second_ = 0;
};

} // namespace vqrx::log::log_perf::v2
