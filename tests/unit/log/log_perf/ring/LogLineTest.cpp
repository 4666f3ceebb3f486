#include "log_perf/ring/LogLine.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace vqrx::test {
namespace {

using namespace log::log_perf::v2;

LogHistoryEntry Parse(const std::string& line)
{
    return ParseLogEntry(SplitLogLine(line));
}

template <typename Exception>
std::string Failure(const std::string& line)
{
    try {
        static_cast<void>(Parse(line));
    } catch (const Exception& exception) {
        return exception.what();
    }
    return "nothing thrown";
}

} // namespace

TEST(LogLine, A_line_has_number_date_milliseconds_level_and_text)
{
    LogHistoryEntry entry;
    entry.level = 2;
    entry.time = 1795236736427;
    entry.date = "Sat Nov 21 04:52:16.427";
    entry.text = "Deamon Thread started";
    EXPECT_EQ("17;Sat Nov 21 04:52:16.427;1795236736427;2;Deamon Thread started",
              FormatLogLine(17, entry));
}

TEST(LogLine, A_line_is_read_back_as_it_was_written)
{
    const LogHistoryEntry entry = Parse("17;Sat Nov 21 04:52:16.427;1795236736427;2;hello");
    EXPECT_EQ("Sat Nov 21 04:52:16.427", entry.date);
    EXPECT_EQ(1795236736427, entry.time);
    EXPECT_EQ(2, entry.level);
    EXPECT_EQ("hello", entry.text);
}

TEST(LogLine, Separators_in_the_text_are_restored_even_two_in_a_row_and_at_its_end)
{
    EXPECT_EQ("a;b;;c;", Parse("1;d;2;3;a;b;;c;").text);
}

TEST(LogLine, A_line_with_an_empty_text_has_five_fields)
{
    EXPECT_EQ(5U, SplitLogLine("1;d;2;3;").size());
    EXPECT_EQ("", Parse("1;d;2;3;").text);
}

TEST(LogLine, A_third_field_that_is_not_a_number_throws_the_conversion_error)
{
    EXPECT_EQ("invalid stoll argument", Failure<std::invalid_argument>("1;d;x;2;t"));
    EXPECT_EQ("invalid stoll argument", Failure<std::invalid_argument>("1;d;;2;t"));
    EXPECT_EQ("stoll argument out of range",
              Failure<std::out_of_range>("1;d;99999999999999999999;2;t"));
}

TEST(LogLine, A_fourth_field_that_is_not_a_number_throws_the_conversion_error)
{
    EXPECT_EQ("invalid stoi argument", Failure<std::invalid_argument>("1;d;5;x;t"));
    EXPECT_EQ("stoi argument out of range", Failure<std::out_of_range>("1;d;5;2147483648;t"));
    EXPECT_EQ("stoi argument out of range",
              Failure<std::out_of_range>("1;d;5;99999999999999999999;t"));
}

TEST(LogLine, Numbers_are_accepted_as_by_the_standard_conversions)
{
    EXPECT_EQ(-5, Parse("1;d; -5x;+2y;t").time);
    EXPECT_EQ(2, Parse("1;d; -5x;+2y;t").level);
}

TEST(LogLine, The_record_number_is_at_the_start_of_the_first_field_and_missing_in_a_torn_line)
{
    EXPECT_EQ(17, ParseRecordNumber("17"));
    EXPECT_EQ(36, ParseRecordNumber("36.123"));
    EXPECT_FALSE(ParseRecordNumber(""));
    EXPECT_FALSE(ParseRecordNumber("ov 16 03:52:36.123"));
    EXPECT_FALSE(ParseRecordNumber("99999999999999999999"));
}

} // namespace vqrx::test
