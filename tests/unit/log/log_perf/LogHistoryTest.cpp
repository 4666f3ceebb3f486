#include "log_perf/LogHistory.h"

#include <gtest/gtest.h>

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

} // namespace

TEST(LogHistory, that_is_empty_raises_for_a_range_and_yields_no_entries)
{
    LogHistory history;
    std::int64_t first = 0;
    std::int64_t last = 0;
    try {
        history.GetRange(0, -1, first, last);
        FAIL();
    } catch (const std::runtime_error& exception) {
        EXPECT_STREQ("History is empty", exception.what());
    }
    EXPECT_TRUE(history.GetEntries(0, -1).empty());
}

TEST(LogHistory, counts_negative_numbers_back_from_the_newest)
{
    LogHistory history;
    history.Insert(7, Entry("only"));
    std::int64_t first = 0;
    std::int64_t last = 0;
    EXPECT_TRUE(history.GetRange(-1, -1, first, last));
    EXPECT_EQ(7, first);
    EXPECT_EQ(7, last);
}

TEST(LogHistory, cuts_a_range_to_what_is_there)
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

TEST(LogHistory, yields_the_entries_of_a_range_in_ascending_order)
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

TEST(LogHistory, drops_the_oldest_entry_when_there_are_more_than_50000)
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

TEST(LogHistory, survives_the_outermost_numbers)
{
    LogHistory history;
    history.Insert(INT64_MAX, Entry("last"));
    std::int64_t first = 0;
    std::int64_t last = 0;
    EXPECT_TRUE(history.GetRange(-1, -1, first, last));
    EXPECT_EQ(INT64_MAX, first);
    history.GetEntries(INT64_MIN, -1);
}

} // namespace vqrx::test
