#include "log_perf/time/DateText.h"

#include <gtest/gtest.h>

#include <ctime>

namespace vqrx::test {

using log::log_perf::v2::DateText;
using log::log_perf::v2::DateTextOfSecond;
using log::log_perf::v2::Timestamp;

TEST(DateText, The_text_is_local_weekday_month_day_and_time_with_three_digits_of_milliseconds)
{
    std::tm noon{};
    noon.tm_year = 2026 - 1900;
    noon.tm_mon = 10;
    noon.tm_mday = 16;
    noon.tm_hour = 12;
    noon.tm_isdst = -1;
    Timestamp timestamp{};
    timestamp.time = std::mktime(&noon);
    timestamp.millitm = 7;
    EXPECT_EQ("Mon Nov 16 12:00:00.007", DateText(timestamp));
    timestamp.millitm = 123;
    EXPECT_EQ("Mon Nov 16 12:00:00.123", DateText(timestamp));
}

TEST(DateText, A_time_that_cannot_be_expressed_shows_question_marks)
{
    Timestamp timestamp{};
    timestamp.time = INT64_MIN;
    EXPECT_EQ("\?\?\? \?\?\? \?\? \?\?:\?\?:\?\?.000", DateText(timestamp));
}

TEST(DateTextOfSecond, The_text_does_not_depend_on_the_time_that_was_formatted_before)
{
    DateTextOfSecond text;
    for (const std::int64_t seconds : {0, 1795236736, 1795236736, 1795236737, 0, 1, 86399}) {
        for (const int milliseconds : {0, 7, 10, 99, 100, 999}) {
            Timestamp timestamp{};
            timestamp.time = seconds;
            timestamp.millitm = static_cast<unsigned short>(milliseconds);
            EXPECT_EQ(DateText(timestamp), text.Of(timestamp));
        }
    }
    Timestamp unknown{};
    unknown.time = INT64_MIN;
    EXPECT_EQ("\?\?\? \?\?\? \?\? \?\?:\?\?:\?\?.000", text.Of(unknown));
}

} // namespace vqrx::test
