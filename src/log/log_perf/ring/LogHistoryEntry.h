#pragma once

#include <cstdint>
#include <string>

namespace vqrx::log::log_perf::v2 {

/// One record of the log file, as LogHistory keeps it.
struct LogHistoryEntry {
    std::int32_t level = 0;
    std::int64_t time = 0; ///< milliseconds since 1970
    std::string date;      ///< local time, as DateText formats it
    std::string text;
};

} // namespace vqrx::log::log_perf::v2
