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

TEST(FindNew, takes_everything_for_new_at_the_beginning)
{
    const NewRecords found = FindNew(std::nullopt, {Of(5, 50), Of(6, 60)});
    EXPECT_EQ(found.first, 0U);
    EXPECT_FALSE(found.lost || found.isNewLog);
}

TEST(FindNew, goes_on_behind_what_was_shown_last)
{
    const std::vector<Record> records = {Of(5, 50), Of(6, 60), Of(7, 70)};
    EXPECT_EQ(FindNew(Of(6, 60), records).first, 2U);
    EXPECT_EQ(FindNew(Of(7, 70), records).first, 3U);
    EXPECT_FALSE(FindNew(Of(6, 60), records).lost);
}

TEST(FindNew, is_not_misled_by_a_number_that_a_restarted_supervisor_gave_out_again)
{
    const std::vector<Record> records = {Of(5, 50), Of(6, 60), Of(6, 900), Of(7, 950)};
    EXPECT_EQ(FindNew(Of(6, 60), records).first, 2U);
    EXPECT_EQ(FindNew(Of(6, 900), records).first, 3U);
}

TEST(FindNew, does_not_show_again_what_is_older_than_what_was_shown_last)
{
    // A supervisor that was refused wrote 3 and 4; the first one goes on in front of them.
    const std::vector<Record> records = {Of(4, 900),  Of(75, 50),  Of(76, 60),
                                         Of(91, 880), Of(92, 900), Of(93, 910)};
    const NewRecords found = FindNew(Of(4, 900), records);
    EXPECT_EQ(found.first, 4U);
    EXPECT_FALSE(found.lost || found.isNewLog);
}

TEST(FindNew, shows_everything_behind_a_clock_that_was_set_back)
{
    const std::vector<Record> counting = {Of(5, 800), Of(6, 900), Of(7, 100), Of(8, 900)};
    EXPECT_EQ(FindNew(Of(6, 900), counting).first, 2U);
    const std::vector<Record> restarted = {Of(5, 800), Of(6, 900), Of(0, 100), Of(1, 110)};
    EXPECT_EQ(FindNew(Of(6, 900), restarted).first, 2U);
}

TEST(FindNew, counts_what_was_overwritten)
{
    const NewRecords found = FindNew(Of(6, 60), {Of(19, 190), Of(20, 200)});
    EXPECT_EQ(found.first, 0U);
    EXPECT_TRUE(found.lost);
    EXPECT_EQ(found.lostCount, 12U);
}

TEST(FindNew, misses_nothing_when_only_what_was_shown_is_overwritten)
{
    const NewRecords found = FindNew(Of(6, 60), {Of(7, 70), Of(8, 80)});
    EXPECT_EQ(found.first, 0U);
    EXPECT_FALSE(found.lost);
}

TEST(FindNew, does_not_guess_when_the_numbers_do_not_tell)
{
    const NewRecords found = FindNew(Of(600, 60), {Of(19, 190), Of(20, 200)});
    EXPECT_TRUE(found.lost);
    EXPECT_EQ(found.lostCount, std::nullopt);
    EXPECT_FALSE(found.isNewLog);
}

TEST(FindNew, tells_a_log_that_was_begun_anew)
{
    const NewRecords found = FindNew(Of(600, 60), {Of(0, 190), Of(1, 200)});
    EXPECT_TRUE(found.isNewLog);
    EXPECT_FALSE(found.lost);
    EXPECT_EQ(found.first, 0U);
}

} // namespace
} // namespace vqrx::test
