#include "log_perf/ring/RingReload.h"

#include "log_perf/ring/LineReader.h"

#include <gtest/gtest.h>

#include <sstream>
#include <utility>
#include <vector>

namespace vqrx::test {
namespace {

using namespace log::log_perf::v2;

struct Reloaded {
    std::int64_t next = 0;
    std::vector<std::pair<std::int64_t, std::string>> records;
};

Reloaded Reload(const std::string& bytes, std::uint32_t position, std::uint32_t sizeLimit = 0)
{
    std::istringstream file(bytes);
    Reloaded result;
    result.next =
        ReloadRing(file, position, sizeLimit, [&](std::int64_t number, LogHistoryEntry entry) {
            result.records.emplace_back(number, entry.text);
        });
    return result;
}

std::string Line(int number, const std::string& text)
{
    return std::to_string(number) + ";date;1000;2;" + text + "\r\n";
}

using Records = std::vector<std::pair<std::int64_t, std::string>>;

} // namespace

TEST(RingReload, of_a_file_that_never_wrapped_counts_from_0_and_goes_on_with_the_next_number)
{
    const std::string bytes = "0x00000040\r\n" + Line(0, "a") + Line(1, "b") + Line(2, "c");
    const auto result = Reload(bytes, static_cast<std::uint32_t>(bytes.size()));
    EXPECT_EQ((Records{{0, "a"}, {1, "b"}, {2, "c"}}), result.records);
    EXPECT_EQ(3, result.next);
}

TEST(RingReload, of_a_wrapped_file_takes_the_older_part_first_and_leaves_its_first_line_out)
{
    const std::string newer = "0x00000000\r\n" + Line(10, "new1") + Line(11, "new2");
    const std::string bytes = newer + "7;date;1000;2;torn\r\n" + Line(8, "old1") + Line(9, "old2");
    const auto result = Reload(bytes, static_cast<std::uint32_t>(newer.size()));
    // Numbered from the line that is left out; the numbers of the later lines are not looked at.
    EXPECT_EQ((Records{{7, "old1"}, {8, "old2"}, {9, "new1"}, {10, "new2"}}), result.records);
    EXPECT_EQ(11, result.next);
}

TEST(RingReload, skips_a_torn_line_with_fewer_than_five_fields)
{
    const std::string newer = "0x00000000\r\n" + Line(10, "new");
    const std::string bytes =
        newer + "16.427;1000;2;torn\r\n" + Line(8, "counted from") + Line(9, "old");
    const auto result = Reload(bytes, static_cast<std::uint32_t>(newer.size()));
    EXPECT_EQ((Records{{8, "old"}, {9, "new"}}), result.records);
}

TEST(RingReload, skips_a_line_torn_at_its_first_separator)
{
    const std::string newer = "0x00000000\r\n" + Line(10, "new");
    const std::string bytes =
        newer + ";date;1000;2;torn\r\n" + Line(8, "counted from") + Line(9, "old");
    EXPECT_EQ((Records{{8, "old"}, {9, "new"}}),
              Reload(bytes, static_cast<std::uint32_t>(newer.size())).records);
}

TEST(RingReload, reads_lines_that_end_in_a_line_feed_alone_too)
{
    const std::string bytes = "0x0000000B\n0;d;1;2;a\n1;d;1;2;b\n";
    EXPECT_EQ((Records{{0, "a"}, {1, "b"}}),
              Reload(bytes, static_cast<std::uint32_t>(bytes.size())).records);
}

TEST(RingReload, of_an_empty_file_finds_nothing)
{
    const auto result = Reload("", 12);
    EXPECT_TRUE(result.records.empty());
    EXPECT_EQ(0, result.next);
}

TEST(RingReload, of_another_programs_text_finds_nothing)
{
    EXPECT_TRUE(Reload("The quick brown fox\njumps; over; the lazy dog\n", 12).records.empty());
}

TEST(RingReload, raises_a_conversion_error_for_a_damaged_number)
{
    const std::string bytes = "0x00000000\r\n0;d;x;2;a\r\n";
    EXPECT_THROW(Reload(bytes, static_cast<std::uint32_t>(bytes.size())), std::invalid_argument);
}

TEST(RingReload, skips_the_rest_of_an_overwritten_record_behind_one_without_its_header)
{
    const std::string newer = "0x00000000\r\n" + Line(10, "new");
    const std::string bytes = newer + Line(11, "cut off from its header") + "00;2;a;b;c;d\r\n" +
                              Line(8, "old1") + Line(9, "old2");
    const auto result = Reload(bytes, static_cast<std::uint32_t>(newer.size()));
    EXPECT_EQ((Records{{11, "old1"}, {12, "old2"}, {13, "new"}}), result.records);
    EXPECT_EQ(14, result.next);
}

TEST(RingReload, raises_a_conversion_error_for_a_damaged_number_in_a_later_line_of_the_older_part)
{
    const std::string newer = "0x00000000\r\n" + Line(10, "new");
    const std::string bytes = newer + Line(7, "a") + Line(8, "b") + "9;d;x;2;c\r\n";
    EXPECT_THROW(Reload(bytes, static_cast<std::uint32_t>(newer.size())), std::invalid_argument);
}

TEST(RingReload, goes_round_at_the_last_number_of_all)
{
    const std::string newer = "0x00000000\r\n" + Line(10, "new");
    const std::string bytes =
        newer + "9223372036854775807;d;1;2;x\r\n" + Line(1, "a") + Line(2, "b");
    const auto result = Reload(bytes, static_cast<std::uint32_t>(newer.size()));
    EXPECT_EQ(3U, result.records.size());
    EXPECT_EQ(INT64_MIN + 2, result.next);
}

TEST(LineReader, keeps_the_beginning_of_an_endless_line_and_finds_the_next)
{
    std::istringstream file(std::string(200000, 'x') + "\nnext\n");
    LineReader reader(file);
    std::string line;
    ASSERT_TRUE(reader.Next(line));
    EXPECT_EQ(LineReader::kMaxLine, line.size());
    EXPECT_EQ(200001U, reader.Position());
    ASSERT_TRUE(reader.Next(line));
    EXPECT_EQ("next", line);
    EXPECT_FALSE(reader.Next(line));
}

TEST(LineReader, counts_the_bytes_of_line_ends_and_of_an_unfinished_last_line)
{
    std::istringstream file("ab\r\n\ncd");
    LineReader reader(file, 12);
    std::string line;
    ASSERT_TRUE(reader.Next(line));
    EXPECT_EQ("ab", line);
    EXPECT_EQ(16U, reader.Position());
    ASSERT_TRUE(reader.Next(line));
    EXPECT_EQ("", line);
    ASSERT_TRUE(reader.Next(line));
    EXPECT_EQ("cd", line);
    EXPECT_EQ(19U, reader.Position());
    EXPECT_FALSE(reader.Next(line));
}

} // namespace vqrx::test
