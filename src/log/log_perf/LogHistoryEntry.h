#pragma once

#include <cstdint>
#include <string>

namespace vqrx::log::log_perf::v2 {

/// One record as it is kept in memory.
struct LogHistoryEntry {
    std::int32_t level = 0;
    std::int64_t time = 0; ///< milliseconds since 1970
    std::string date;      ///< the line's date text, local time
    std::string text;
};

} // namespace vqrx::log::log_perf::v2
