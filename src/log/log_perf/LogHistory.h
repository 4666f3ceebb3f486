#pragma once

#include "log_perf/ILogRetriever.h"
#include "sync_ptr/CriticalSection.h"

#include <cstddef>
#include <map>
#include <memory_resource>
#include <string>

namespace vqrx::log::log_perf::v2 {

/// The most recent records, by number; the oldest leaves when there are too many. Any thread.
class LogHistory {
public:
    static constexpr std::size_t kCapacity = 50000;

    void Insert(std::int64_t number, const LogHistoryEntry& entry);
    void Clear() noexcept;

    /// As ILogRetriever says.
    bool GetRange(std::int64_t first, std::int64_t last, std::int64_t& outFirst,
                  std::int64_t& outLast);
    ILogRetriever::Entries GetEntries(std::int64_t first, std::int64_t last);

private:
    // An entry with its two texts in one piece: half the memory, and half the work to get it.
    struct Stored {
        std::int64_t time;
        std::int32_t level;
        std::uint32_t dateLength;
        std::pmr::string dateAndText; // of nodes_, or a longer one of the heap
    };

    bool InsertInPlaceOfOldest(std::int64_t number, const LogHistoryEntry& entry);
    Stored Store(const LogHistoryEntry& entry);
    std::int64_t Resolve(std::int64_t number) const noexcept;

    system::sync_ptr::v1::CriticalSection lock_;
    std::size_t capacity_ = kCapacity;
    // For entries and all but long texts; under lock_, as entries_. Larger pieces at a time would
    // double the memory of a full history, of which the last piece is used in part only.
    std::pmr::unsynchronized_pool_resource nodes_{std::pmr::pool_options{256, 1024}};
    std::pmr::map<std::int64_t, Stored> entries_{&nodes_};
};

} // namespace vqrx::log::log_perf::v2
