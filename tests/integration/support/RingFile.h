#pragma once

#include <ostream>
#include <string>
#include <vector>

namespace vqrx::test {

/// One record of the supervisor's log file.
struct RingRecord {
    long long sequence;
    int level;
    std::string text;
    long long timeMs; ///< milliseconds since 1970, UTC
};

/// Writes "2: text", for the message of a failed expectation.
std::ostream& operator<<(std::ostream& stream, const RingRecord& record);

/// Returns the complete records of a log file that has not wrapped yet, in order.
[[nodiscard]] std::vector<RingRecord> ReadRingFile(const std::string& path);

/// Changes the beginning of a text in a log file, as if the ring had overwritten its record.
/// @return false if the file does not contain the text
[[nodiscard]] bool OverwriteRecord(const std::string& path, const std::string& text);

} // namespace vqrx::test
