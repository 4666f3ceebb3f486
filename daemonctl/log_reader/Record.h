#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace vqrx::client::v0 {

/// One record of the supervisor's log file.
struct Record {
    std::optional<std::int64_t> number; ///< nothing when the file holds none that can be read
    std::int64_t timeMs = 0;            ///< since 1970, UTC; within ten thousand years of it
    int level = 0;                      ///< 0 error, 1 warning, 2 information, 3 detail
    std::string date;                   ///< as written: the supervisor's local time
    std::string text; ///< UTF-8 from ReadLogFile, as it lies in the file from ScanRing

    bool operator==(const Record&) const = default;
};

} // namespace vqrx::client::v0
