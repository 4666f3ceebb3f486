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
};

/// "2: text", as a failed expectation shows it.
std::ostream& operator<<(std::ostream& stream, const RingRecord& record);

/// The complete records of a log file that has not wrapped yet, in order.
std::vector<RingRecord> ReadRingFile(const std::string& path);

} // namespace vqrx::test
