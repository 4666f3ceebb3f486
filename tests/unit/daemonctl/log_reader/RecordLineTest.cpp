#include "RecordLine.h"

#include <gtest/gtest.h>

namespace vqrx::test {
namespace {

using client::v0::LineGrade;
using client::v0::ParseRecordLine;
using client::v0::Record;

TEST(RecordLine, reads_number_date_time_level_and_text)
{
    const auto line = ParseRecordLine("17;Mon Nov 16 03:52:36.123;1763265156123;2;a; b ");
    EXPECT_EQ(line.grade, LineGrade::kWhole);
    EXPECT_EQ(line.record, (Record{17, 1763265156123, 2, "Mon Nov 16 03:52:36.123", "a; b "}));
}

TEST(RecordLine, reads_a_day_below_ten_and_an_unknown_date)
{
    EXPECT_EQ(ParseRecordLine("1;Aaa Zzz  1 03:52:36.129;5;0;x").grade, LineGrade::kWhole);
    EXPECT_EQ(ParseRecordLine("1;\?\?\? \?\?\? \?\? \?\?:\?\?:\?\?.123;-5;0;x").grade,
              LineGrade::kWhole);
}

TEST(RecordLine, keeps_the_other_fields_if_number_or_date_is_damaged)
{
    for (const char* const text :
         {"x;Mon Nov 16 03:52:36.123;5;0;x", "07;Mon Nov 16 03:52:36.123;5;0;x",
          ";Mon Nov 16 03:52:36.123;5;0;x", "9223372036854775808;Mon Nov 16 03:52:36.123;5;0;x",
          "7;yesterday;5;0;x", "7;@on Nov 16 03:52:36.123;5;0;x", "7;[on Nov 16 03:52:36.123;5;0;x",
          "7;M`n Nov 16 03:52:36.123;5;0;x", "7;M{n Nov 16 03:52:36.123;5;0;x",
          "7;Mon Nov 16 0/:52:36.123;5;0;x", "7;Mon Nov 16 0::52:36.123;5;0;x"}) {
        const auto line = ParseRecordLine(text);
        EXPECT_EQ(line.grade, LineGrade::kReadable) << text;
        EXPECT_EQ(line.record.text, "x") << text;
    }
}

TEST(RecordLine, refuses_a_line_without_time_or_level)
{
    for (const char* const text :
         {"", ";;;;", "1;Mon Nov 16 03:52:36.123;5;0", "1;Mon Nov 16 03:52:36.123;;0;x",
          "1;Mon Nov 16 03:52:36.123;5;;x", "1;Mon Nov 16 03:52:36.123;5x;0;x",
          "1;Mon Nov 16 03:52:36.123;253402300800000;0;x",
          "1;Mon Nov 16 03:52:36.123;-9223372036854775808;0;x",
          "1;Mon Nov 16 03:52:36.123;5;99999999999;x", "36.123;1763265156123;2;1;2;3",
          "6 03:52:36.123;1763265156123;2;1;2;3"}) {
        EXPECT_EQ(ParseRecordLine(text).grade, LineGrade::kUnreadable) << text;
    }
}

} // namespace
} // namespace vqrx::test
