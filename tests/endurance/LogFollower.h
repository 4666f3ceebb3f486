#pragma once

#include "RingFile.h"

#include <cstdint>
#include <string>
#include <vector>

namespace vqrx::test {

/// Reads a ring file while the supervisor writes it. Returns every record once and in order, over
/// any number of wraps. For one thread.
class LogFollower {
public:
    explicit LogFollower(const std::string& path);

    /// Returns the records that were written after the last call.
    /// @throws std::runtime_error  if a record is missing
    [[nodiscard]] std::vector<RingRecord> Poll();

    /// Returns the number of the next record.
    [[nodiscard]] long long Next() const { return next_; }
    [[nodiscard]] unsigned Wraps() const { return wraps_; }

private:
    void Take(const std::string& bytes, bool untilGap, std::vector<RingRecord>& found);

    std::string path_;
    std::uint64_t position_ = 12;
    long long next_ = 0;
    unsigned wraps_ = 0;
};

} // namespace vqrx::test
