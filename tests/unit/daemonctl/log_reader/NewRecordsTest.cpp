#include "NewRecords.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace vqrx::test {
namespace {

using client::v0::FindNew;
using client::v0::NewRecords;
using client::v0::Record;

Record Of(std::int64_t number, std::int64_t time)
{
    return {number, time, 2, "", "text " + std::to_string(number)};
}

TEST(FindNew, returns_all_records_if_none_was_shown)
{
    const NewRecords found = FindNew({}, {Of(5, 50), Of(6, 60)});
    EXPECT_EQ(found.first, 0U);
    EXPECT_FALSE(found.lost || found.isNewLog);
}

TEST(FindNew, continues_after_the_record_shown_last)
{
    const std::vector<Record> records = {Of(5, 50), Of(6, 60), Of(7, 70)};
    EXPECT_EQ(FindNew({Of(6, 60)}, records).first, 2U);
    EXPECT_EQ(FindNew({Of(7, 70)}, records).first, 3U);
    EXPECT_FALSE(FindNew({Of(6, 60)}, records).lost);
}

TEST(FindNew, tells_two_records_of_one_number_apart)
{
    const std::vector<Record> records = {Of(5, 50), Of(6, 60), Of(6, 900), Of(7, 950)};
    EXPECT_EQ(FindNew({Of(6, 60)}, records).first, 2U);
    EXPECT_EQ(FindNew({Of(6, 900)}, records).first, 3U);
}

TEST(FindNew, skips_older_records_after_the_record_shown_last)
{
    // 4 is the last record of a second supervisor that was refused. The first supervisor wrote 75
    // to 91 earlier, 92 and 93 later.
    const std::vector<Record> records = {Of(4, 900),  Of(75, 50),  Of(76, 60),
                                         Of(91, 880), Of(92, 900), Of(93, 910)};
    const NewRecords found = FindNew({Of(4, 900)}, records);
    EXPECT_EQ(found.first, 4U);
    EXPECT_FALSE(found.lost || found.isNewLog);
}

TEST(FindNew, finds_the_newest_shown_record_if_the_last_one_is_overwritten)
{
    // 3 and 4 are those of the refused supervisor. The first one has written 92 to 94 over them.
    const std::vector<Record> shown = {Of(75, 50), Of(76, 60), Of(91, 880), Of(3, 890), Of(4, 900)};
    const std::vector<Record> records = {Of(76, 60), Of(91, 880), Of(92, 905), Of(93, 910),
                                         Of(94, 915)};
    const NewRecords found = FindNew(shown, records);
    EXPECT_EQ(found.first, 2U);
    EXPECT_FALSE(found.lost || found.isNewLog);
    // A record of the same time and number with another text was not shown.
    const std::vector<Record> others = {{4, 900, 2, "", "other"}, Of(5, 910)};
    EXPECT_EQ(FindNew(shown, others).first, 0U);
}

TEST(FindNew, skips_nothing_if_the_clock_was_set_back)
{
    const std::vector<Record> counting = {Of(5, 800), Of(6, 900), Of(7, 100), Of(8, 900)};
    EXPECT_EQ(FindNew({Of(6, 900)}, counting).first, 2U);
    const std::vector<Record> restarted = {Of(5, 800), Of(6, 900), Of(0, 100), Of(1, 110)};
    EXPECT_EQ(FindNew({Of(6, 900)}, restarted).first, 2U);
}

TEST(FindNew, counts_overwritten_records)
{
    const NewRecords found = FindNew({Of(6, 60)}, {Of(19, 190), Of(20, 200)});
    EXPECT_EQ(found.first, 0U);
    EXPECT_TRUE(found.lost);
    EXPECT_EQ(found.lostCount, 12U);
}

TEST(FindNew, reports_no_gap_if_only_shown_records_are_overwritten)
{
    const NewRecords found = FindNew({Of(6, 60)}, {Of(7, 70), Of(8, 80)});
    EXPECT_EQ(found.first, 0U);
    EXPECT_FALSE(found.lost);
}

TEST(FindNew, reports_a_gap_of_unknown_size_if_the_numbers_went_back)
{
    const NewRecords found = FindNew({Of(600, 60)}, {Of(19, 190), Of(20, 200)});
    EXPECT_TRUE(found.lost);
    EXPECT_EQ(found.lostCount, std::nullopt);
    EXPECT_FALSE(found.isNewLog);
}

TEST(FindNew, reports_a_new_log_file)
{
    const NewRecords found = FindNew({Of(600, 60)}, {Of(0, 190), Of(1, 200)});
    EXPECT_TRUE(found.isNewLog);
    EXPECT_FALSE(found.lost);
    EXPECT_EQ(found.first, 0U);
}

} // namespace
} // namespace vqrx::test
