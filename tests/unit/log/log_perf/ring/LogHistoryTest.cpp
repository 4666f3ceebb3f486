#include "log_perf/ring/LogHistory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory_resource>
#include <new>
#include <stdexcept>

namespace vqrx::test {
namespace {

using log::log_perf::v2::LogHistory;
using log::log_perf::v2::LogHistoryEntry;

LogHistoryEntry Entry(const std::string& text)
{
    LogHistoryEntry entry;
    entry.text = text;
    return entry;
}

/// Counts the bytes of all histories that are made while it lives.
class CountedMemory : public std::pmr::memory_resource {
public:
    CountedMemory()
        : before_(std::pmr::set_default_resource(this))
    {
    }
    CountedMemory(const CountedMemory&) = delete;
    CountedMemory& operator=(const CountedMemory&) = delete;
    ~CountedMemory() override { std::pmr::set_default_resource(before_); }

    std::size_t Held() const { return held_; }
    std::size_t Allocations() const { return allocations_; }
    /// Lets the allocation fail that comes after so many others.
    void FailAfter(std::size_t others) { toFail_ = allocations_ + others; }
    void FailNoMore() { toFail_ = kNone; }

private:
    static constexpr std::size_t kNone = static_cast<std::size_t>(-1);

    void* do_allocate(std::size_t bytes, std::size_t alignment) override
    {
        if (allocations_ == toFail_) {
            throw std::bad_alloc();
        }
        void* const memory = std::pmr::new_delete_resource()->allocate(bytes, alignment);
        held_ += bytes;
        ++allocations_;
        return memory;
    }
    void do_deallocate(void* memory, std::size_t bytes, std::size_t alignment) override
    {
        held_ -= bytes;
        std::pmr::new_delete_resource()->deallocate(memory, bytes, alignment);
    }
    bool do_is_equal(const memory_resource& other) const noexcept override
    {
        return this == &other;
    }

    std::pmr::memory_resource* before_;
    std::size_t held_ = 0;
    std::size_t allocations_ = 0;
    std::size_t toFail_ = kNone;
};

} // namespace

// Memory of entries that left is used again for entries of other lengths.
TEST(LogHistory, Texts_of_every_length_take_no_more_memory_than_the_longest)
{
    constexpr std::size_t kMiB = 1048576;
    const CountedMemory memory;
    LogHistory history;
    std::int64_t number = 0;
    std::size_t most = 0;
    for (const std::size_t length : {100, 220, 300, 420, 500, 700, 1000, 100}) {
        for (std::size_t i = 0; i < LogHistory::kCapacity; ++i) {
            history.Insert(number++, Entry(std::string(length, 'x')));
        }
        most = std::max(most, memory.Held());
        const std::size_t allocations = memory.Allocations();
        history.Insert(number++, Entry(std::string(length, 'y'))); // in the memory of the oldest
        EXPECT_EQ(allocations, memory.Allocations()) << length;
    }
    EXPECT_GT(80 * kMiB, most); // 50000 texts of 1000 characters, and their nodes
    EXPECT_GT(20 * kMiB, memory.Held());
}

// Each length is a little greater than the one before, so that no text fits into the memory of the
// entry that leaves.
TEST(LogHistory, Texts_that_grow_slowly_do_not_keep_memory_of_every_length)
{
    constexpr std::size_t kMiB = 1048576;
    const CountedMemory memory;
    LogHistory history;
    std::int64_t number = 0;
    for (const std::size_t length : {25, 40, 60, 75, 90, 105, 120, 150, 185}) {
        for (std::size_t i = 0; i < LogHistory::kCapacity; ++i) {
            history.Insert(number++, Entry(std::string(length, 'x')));
        }
        EXPECT_GT(26 * kMiB, memory.Held()) << length;
    }
}

TEST(LogHistory, Insert_without_memory_throws_and_a_later_Insert_works)
{
    bool failed = true;
    for (std::size_t others = 0; failed; ++others) {
        SCOPED_TRACE(others);
        CountedMemory memory;
        LogHistory history;
        memory.FailAfter(others);
        failed = false;
        for (std::size_t number = 0; number < 300; ++number) {
            const auto key = static_cast<std::int64_t>(number);
            try {
                history.Insert(key, Entry(std::string(number, 'x')));
            } catch (const std::bad_alloc&) {
                failed = true;
                memory.FailNoMore();
                history.Insert(key, Entry("after"));
            }
        }
        const auto entries = history.GetEntries(0, -1);
        ASSERT_EQ(300U, entries.size());
        for (std::size_t number = 0; number < entries.size(); ++number) {
            const std::string& text = entries[number].second.text;
            EXPECT_TRUE(text == std::string(number, 'x') || (failed && text == "after")) << number;
        }
    }
}

TEST(LogHistory, An_empty_history_throws_for_a_range_and_returns_no_entries)
{
    LogHistory history;
    std::int64_t first = 0;
    std::int64_t last = 0;
    try {
        static_cast<void>(history.GetRange(0, -1, first, last));
        FAIL();
    } catch (const std::runtime_error& exception) {
        EXPECT_STREQ("History is empty", exception.what());
    }
    EXPECT_TRUE(history.GetEntries(0, -1).empty());
}

TEST(LogHistory, A_negative_number_counts_back_from_the_newest_record)
{
    LogHistory history;
    history.Insert(7, Entry("only"));
    std::int64_t first = 0;
    std::int64_t last = 0;
    EXPECT_TRUE(history.GetRange(-1, -1, first, last));
    EXPECT_EQ(7, first);
    EXPECT_EQ(7, last);
}

TEST(LogHistory, A_range_is_limited_to_the_records_that_are_kept)
{
    LogHistory history;
    for (int number = 10; number < 20; ++number) {
        history.Insert(number, Entry(std::to_string(number)));
    }
    std::int64_t first = 0;
    std::int64_t last = 0;
    EXPECT_TRUE(history.GetRange(0, 1000, first, last));
    EXPECT_EQ(10, first);
    EXPECT_EQ(19, last);
    EXPECT_TRUE(history.GetRange(-3, -2, first, last));
    EXPECT_EQ(17, first);
    EXPECT_EQ(18, last);
    EXPECT_FALSE(history.GetRange(15, 12, first, last));
    EXPECT_FALSE(history.GetRange(30, 40, first, last));
}

TEST(LogHistory, The_entries_of_a_range_come_in_ascending_order)
{
    LogHistory history;
    for (int number = 10; number < 20; ++number) {
        history.Insert(number, Entry(std::to_string(number)));
    }
    const auto entries = history.GetEntries(12, 14);
    ASSERT_EQ(3U, entries.size());
    EXPECT_EQ(12, entries[0].first);
    EXPECT_EQ("14", entries[2].second.text);
    EXPECT_EQ(10U, history.GetEntries(0, -1).size());
    EXPECT_EQ(2U, history.GetEntries(-2, -1).size());
    EXPECT_TRUE(history.GetEntries(14, 12).empty());
}

TEST(LogHistory, The_oldest_entry_leaves_when_there_are_more_than_50000)
{
    LogHistory history;
    for (int number = 0; number <= 50000; ++number) {
        history.Insert(number, Entry(""));
    }
    std::int64_t first = 0;
    std::int64_t last = 0;
    EXPECT_TRUE(history.GetRange(0, -1, first, last));
    EXPECT_EQ(1, first);
    EXPECT_EQ(50000, last);
}

// A record that replaces the oldest one may need more memory, less, or as much.
TEST(LogHistory, A_full_history_keeps_every_text_whole)
{
    const auto textOf = [](std::int64_t number) {
        return std::to_string(number) +
               std::string(static_cast<std::size_t>(number * 37 % 260), 'x');
    };
    LogHistory history;
    const auto capacity = static_cast<std::int64_t>(LogHistory::kCapacity);
    for (std::int64_t number = 0; number < 2 * capacity + 1000; ++number) {
        LogHistoryEntry entry = Entry(textOf(number));
        entry.time = number;
        entry.level = static_cast<std::int32_t>(number % 4);
        entry.date = std::to_string(number % 1000);
        history.Insert(number, entry);
    }
    const auto entries = history.GetEntries(0, -1);
    ASSERT_EQ(LogHistory::kCapacity, entries.size());
    std::int64_t number = capacity + 1000;
    for (const auto& [key, entry] : entries) {
        ASSERT_EQ(number, key);
        ASSERT_EQ(textOf(number), entry.text);
        ASSERT_EQ(std::to_string(number % 1000), entry.date);
        ASSERT_EQ(number, entry.time);
        ASSERT_EQ(number % 4, entry.level);
        ++number;
    }
}

TEST(LogHistory, A_full_history_accepts_numbers_that_do_not_ascend)
{
    LogHistory history;
    const auto capacity = static_cast<std::int64_t>(LogHistory::kCapacity);
    for (std::int64_t number = 1; number <= capacity; ++number) {
        history.Insert(10 * number, Entry("a"));
    }
    history.Insert(10 * capacity, Entry("again")); // replaces a record: none leaves
    history.Insert(10 * capacity - 5, Entry("between"));
    history.Insert(1, Entry("before all"));
    const auto entries = history.GetEntries(0, -1);
    ASSERT_EQ(LogHistory::kCapacity, entries.size());
    EXPECT_EQ(20, entries.front().first);
    EXPECT_EQ("between", entries[entries.size() - 2].second.text);
    EXPECT_EQ("again", entries.back().second.text);
}

TEST(LogHistory, The_largest_and_smallest_numbers_do_not_overflow)
{
    LogHistory history;
    history.Insert(INT64_MAX, Entry("last"));
    std::int64_t first = 0;
    std::int64_t last = 0;
    EXPECT_TRUE(history.GetRange(-1, -1, first, last));
    EXPECT_EQ(INT64_MAX, first);
    EXPECT_EQ(1U, history.GetEntries(INT64_MIN, -1).size());
}

} // namespace vqrx::test
