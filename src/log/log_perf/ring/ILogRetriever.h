#pragma once

#include "log_perf/ring/LogHistoryEntry.h"

#include <cstdint>
#include <utility>
#include <vector>

namespace vqrx::log::log_perf::v2 {

/// Reads the latest records by their numbers. A negative number counts back from the newest record:
/// -1 is the newest record, -2 the record before it. Any thread.
class ILogRetriever {
public:
    using Entries = std::vector<std::pair<std::int64_t, LogHistoryEntry>>;

    ILogRetriever() = default;
    ILogRetriever(const ILogRetriever&) = delete;
    ILogRetriever& operator=(const ILogRetriever&) = delete;

    /// Limits a range to the records that are kept.
    /// @param first     number of the first record, may be negative
    /// @param last      number of the last record, may be negative
    /// @param outFirst  the larger of first and the oldest record's number
    /// @param outLast   the smaller of last and the newest record's number
    /// @return false if no record of the range is kept; outFirst is then larger than outLast
    /// @throws std::runtime_error "History is empty" if no record is kept at all
    [[nodiscard]] virtual bool GetRange(std::int64_t first, std::int64_t last,
                                        std::int64_t& outFirst, std::int64_t& outLast) = 0;

    /// Copies the records of a range, first and last included, in ascending order. Records that are
    /// not kept are left out. Numbers may be negative, as for GetRange. Returns nothing if no
    /// record is kept at all.
    /// @throws std::bad_alloc
    [[nodiscard]] virtual Entries GetEntries(std::int64_t first, std::int64_t last) = 0;

    virtual ~ILogRetriever() = default;
};

} // namespace vqrx::log::log_perf::v2
