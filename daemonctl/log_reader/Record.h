#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace vqrx::client::v0 {

// The levels of the supervisor's log records. A lower number is more severe.
inline constexpr int kErrorRecord = 0;
inline constexpr int kWarningRecord = 1;
inline constexpr int kInformationRecord = 2;
inline constexpr int kDetailRecord = 3;

/// One record of the supervisor's log file.
struct Record {
    std::optional<std::int64_t> number; ///< nothing if the number in the file cannot be read
    std::int64_t timeMs = 0;            ///< milliseconds since 1970, UTC
    int level = 0;                      ///< kErrorRecord to kDetailRecord, or another number
    std::string date;                   ///< as written: the supervisor's local time
    std::string text; ///< UTF-8 from ReadLogFile; the bytes of the file from ScanRing

    bool operator==(const Record&) const = default;
};

/// Takes one record that was read.
using RecordCallback = std::function<void(Record record)>;

} // namespace vqrx::client::v0
