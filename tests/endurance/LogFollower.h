#pragma once

#include "RingFile.h"

#include <cstdint>
#include <string>
#include <vector>

namespace vqrx::test {

/// Reads a ring file while it is written, as a reader beside the supervisor does, and misses
/// nothing: every record once, in order, over any number of wraps.
class LogFollower {
public:
    explicit LogFollower(const std::string& path);

    /// Reads on. @return the records that are new
    /// @throws std::runtime_error when a record is missing
    std::vector<RingRecord> Poll();

    long long Next() const { return next_; }
    unsigned Wraps() const { return wraps_; }

private:
    void Take(const std::string& bytes, bool untilGap, std::vector<RingRecord>& found);

    std::string path_;
    std::uint64_t position_ = 12;
    long long next_ = 0;
    unsigned wraps_ = 0;
};

} // namespace vqrx::test
