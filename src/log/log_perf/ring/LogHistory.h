#pragma once

#include "log_perf/ring/BlockPool.h"
#include "log_perf/ring/ILogRetriever.h"
#include "sync_ptr/Guarded.h"

#include <cstddef>
#include <map>
#include <string>

namespace vqrx::log::log_perf::v2 {

/// Keeps the latest records by number. If there are more than kCapacity, the record with the lowest
/// number is removed. Any thread.
class LogHistory {
public:
    static constexpr std::size_t kCapacity = 50000; ///< records

    /// Adds a record, or replaces the record of that number. @throws std::bad_alloc
    void Insert(std::int64_t number, const LogHistoryEntry& entry);

    /// Removes the records from this number on.
    void RemoveFrom(std::int64_t number) noexcept;

    /// Removes all records.
    void Clear() noexcept;

    /// See ILogRetriever.
    [[nodiscard]] bool GetRange(std::int64_t first, std::int64_t last, std::int64_t& outFirst,
                                std::int64_t& outLast);

    /// See ILogRetriever.
    [[nodiscard]] ILogRetriever::Entries GetEntries(std::int64_t first, std::int64_t last);

private:
    // An entry with both texts in one string: half the memory and half the allocations.
    struct Stored {
        std::int64_t time;
        std::int32_t level;
        std::uint32_t dateLength;
        std::pmr::string dateAndText; // in the pool; a longer text on the heap
    };

    struct Table {
        [[nodiscard]] bool InsertInPlaceOfOldest(std::int64_t number, const LogHistoryEntry& entry);
        Stored Store(const LogHistoryEntry& entry);
        std::int64_t Resolve(std::int64_t number) const noexcept;

        BlockPool pool; // memory of the nodes of entries and of all but long texts
        std::pmr::map<std::int64_t, Stored> entries{&pool};
    };

    system::sync_ptr::v1::Guarded<Table> table_;
};

} // namespace vqrx::log::log_perf::v2
