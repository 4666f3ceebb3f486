#pragma once

#include "log_perf/ILogRetriever.h"
#include "sync_ptr/CriticalSection.h"

#include <cstddef>
#include <map>

namespace vqrx::log::log_perf::v2 {

/// The most recent records, by number; the oldest leaves when there are too many. Any thread.
class LogHistory {
public:
    static constexpr std::size_t kCapacity = 50000;

    void Insert(std::int64_t number, LogHistoryEntry entry);
    void Clear() noexcept;

    /// As ILogRetriever says.
    bool GetRange(std::int64_t first, std::int64_t last, std::int64_t& outFirst,
                  std::int64_t& outLast);
    ILogRetriever::Entries GetEntries(std::int64_t first, std::int64_t last);

private:
    std::int64_t Resolve(std::int64_t number) const noexcept;

    system::sync_ptr::v1::CriticalSection lock_;
    std::size_t capacity_ = kCapacity;
    std::map<std::int64_t, LogHistoryEntry> entries_;
};

} // namespace vqrx::log::log_perf::v2
