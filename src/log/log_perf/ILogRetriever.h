#pragma once

#include "log_perf/LogHistoryEntry.h"

#include <cstdint>
#include <utility>
#include <vector>

namespace vqrx::log::log_perf::v2 {

/// Reads the most recent records by their numbers. A negative number counts back from the newest
/// record: -1 is the newest, -2 the one before. Any thread.
class ILogRetriever {
public:
    using Entries = std::vector<std::pair<std::int64_t, LogHistoryEntry>>;

    ILogRetriever() = default;
    ILogRetriever(const ILogRetriever&) = delete;
    ILogRetriever& operator=(const ILogRetriever&) = delete;

    /// Cuts [first, last] to the records that are there.
    /// @return false when nothing of the range is there
    /// @throws std::runtime_error "History is empty"
    virtual bool GetRange(std::int64_t first, std::int64_t last, std::int64_t& outFirst,
                          std::int64_t& outLast) = 0;

    /// The records of [first, last] that are there, in ascending order.
    virtual Entries GetEntries(std::int64_t first, std::int64_t last) = 0;

    virtual ~ILogRetriever() = default;
};

} // namespace vqrx::log::log_perf::v2
