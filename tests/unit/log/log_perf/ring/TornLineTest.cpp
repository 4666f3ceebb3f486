#include "log_perf/ring/TornLine.h"

#include "log_perf/ring/LogLine.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <optional>
#include <string>

namespace vqrx::test {
namespace {

using namespace log::log_perf::v2;

constexpr std::uint64_t kInSector = 600; // no line below reaches the next sector from here

bool Torn(const std::string& line, std::uint64_t start, std::optional<std::int64_t> previous)
{
    return MayBeTorn(SplitLogLine(line), start, previous);
}

TEST(TornLine, A_line_in_one_sector_that_begins_with_number_and_date_is_not_torn)
{
    EXPECT_FALSE(Torn("17;Sun Nov 16 03:52:36.123;x;2;text", kInSector, 5));
    EXPECT_FALSE(Torn("0;Sun Nov 16 03:52:36.123;1;x;text", kInSector, 5));
    EXPECT_FALSE(Torn("-17;??? ??? ?? ??:??:??.123;x;2;text", kInSector, 5));
}

TEST(TornLine, A_line_in_one_sector_that_continues_the_numbers_is_not_torn)
{
    EXPECT_FALSE(Torn("6;any date;x;2;text", kInSector, 5));
    EXPECT_FALSE(Torn("6;any date;x;2;text", 12, std::nullopt)); // the first record of the file
    EXPECT_TRUE(Torn("6;any date;x;2;text", kInSector, std::nullopt));
    EXPECT_FALSE(Torn("-9223372036854775808;d;x;2;text", kInSector,
                      std::numeric_limits<std::int64_t>::max()));
    EXPECT_TRUE(Torn("7;any date;x;2;text", kInSector, 5));
}

TEST(TornLine, A_line_without_a_whole_number_is_the_remainder_of_a_record)
{
    for (const char* line :
         {"b;c;d;e;f", ";Sun Nov 16 03:52:36.123;x;2;text", "07;Sun Nov 16 03:52:36.123;x;2;text",
          "7 ;Sun Nov 16 03:52:36.123;x;2;text", "+7;Sun Nov 16 03:52:36.123;x;2;text",
          "99999999999999999999;Sun Nov 16 03:52:36.123;x;2;text"}) {
        EXPECT_TRUE(Torn(line, kInSector, std::nullopt)) << line;
    }
}

TEST(TornLine, A_line_is_torn_if_a_sector_begins_before_its_text)
{
    const std::string line = "6;Sun Nov 16 03:52:36.123;17632x;2;text";
    const std::uint64_t text = line.rfind(';'); // offset of the separator after the level
    EXPECT_TRUE(Torn(line, 1024, 5));
    EXPECT_TRUE(Torn(line, 1024 - 1, 5));
    EXPECT_TRUE(Torn(line, 1024 - text, 5));
    EXPECT_FALSE(Torn(line, 1024 - text - 1, 5));
    EXPECT_FALSE(Torn(line, 1025, 5));
}

} // namespace
} // namespace vqrx::test
