#include "log_perf/ring/RingReload.h"

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

/// A file that refuses one read or one seek.
class RefusingFile : public std::stringbuf {
public:
    RefusingFile(const std::string& bytes, int reads, int seeks)
        : std::stringbuf(bytes)
        , reads_(reads)
        , seeks_(seeks)
    {
    }

protected:
    std::streamsize xsgetn(char* to, std::streamsize count) override
    {
        if (reads_-- == 0) {
            throw std::ios_base::failure("refused");
        }
        return std::stringbuf::xsgetn(to, count);
    }
    pos_type seekpos(pos_type position, std::ios::openmode mode) override
    {
        return seeks_-- == 0 ? pos_type(-1) : std::stringbuf::seekpos(position, mode);
    }

private:
    int reads_; // that succeed
    int seeks_;
};

using Records = std::vector<std::pair<std::int64_t, std::string>>;

} // namespace

TEST(RingReload, A_file_that_never_wrapped_is_numbered_from_0)
{
    const std::string bytes = "0x00000040\r\n" + Line(0, "a") + Line(1, "b") + Line(2, "c");
    const auto result = Reload(bytes, static_cast<std::uint32_t>(bytes.size()));
    EXPECT_EQ((Records{{0, "a"}, {1, "b"}, {2, "c"}}), result.records);
    EXPECT_EQ(3, result.next);
}

TEST(RingReload, A_wrapped_file_is_read_older_part_first_without_its_first_line)
{
    const std::string newer = "0x00000000\r\n" + Line(10, "new1") + Line(11, "new2");
    const std::string bytes = newer + "7;date;1000;2;torn\r\n" + Line(8, "old1") + Line(9, "old2");
    const auto result = Reload(bytes, static_cast<std::uint32_t>(newer.size()));
    // The numbers count from the line that is left out; the numbers in the later lines are ignored.
    EXPECT_EQ((Records{{7, "old1"}, {8, "old2"}, {9, "new1"}, {10, "new2"}}), result.records);
    EXPECT_EQ(11, result.next);
}

TEST(RingReload, A_torn_line_with_fewer_than_five_fields_is_skipped)
{
    const std::string newer = "0x00000000\r\n" + Line(10, "new");
    const std::string bytes =
        newer + "16.427;1000;2;torn\r\n" + Line(8, "counted from") + Line(9, "old");
    const auto result = Reload(bytes, static_cast<std::uint32_t>(newer.size()));
    EXPECT_EQ((Records{{8, "old"}, {9, "new"}}), result.records);
}

TEST(RingReload, A_line_torn_at_its_first_separator_is_skipped)
{
    const std::string newer = "0x00000000\r\n" + Line(10, "new");
    const std::string bytes =
        newer + ";date;1000;2;torn\r\n" + Line(8, "counted from") + Line(9, "old");
    EXPECT_EQ((Records{{8, "old"}, {9, "new"}}),
              Reload(bytes, static_cast<std::uint32_t>(newer.size())).records);
}

TEST(RingReload, Lines_may_end_with_a_line_feed_alone)
{
    const std::string bytes = "0x0000000B\n0;d;1;2;a\n1;d;1;2;b\n";
    EXPECT_EQ((Records{{0, "a"}, {1, "b"}}),
              Reload(bytes, static_cast<std::uint32_t>(bytes.size())).records);
}

TEST(RingReload, An_empty_file_has_no_records)
{
    const auto result = Reload("", 12);
    EXPECT_TRUE(result.records.empty());
    EXPECT_EQ(0, result.next);
}

TEST(RingReload, A_text_of_another_program_has_no_records)
{
    EXPECT_TRUE(Reload("The quick brown fox\njumps; over; the lazy dog\n", 12).records.empty());
}

TEST(RingReload, A_damaged_time_throws_a_conversion_error)
{
    const std::string bytes = "0x00000000\r\n0;d;x;2;a\r\n";
    EXPECT_THROW(Reload(bytes, static_cast<std::uint32_t>(bytes.size())), std::invalid_argument);
}

TEST(RingReload, The_remainder_after_a_record_that_the_header_does_not_count_is_skipped)
{
    const std::string newer = "0x00000000\r\n" + Line(10, "new");
    const std::string bytes = newer + Line(11, "not counted by the header") + "00;2;a;b;c;d\r\n" +
                              Line(8, "old1") + Line(9, "old2");
    const auto result = Reload(bytes, static_cast<std::uint32_t>(newer.size()));
    EXPECT_EQ((Records{{11, "old1"}, {12, "old2"}, {13, "new"}}), result.records);
    EXPECT_EQ(14, result.next);
}

TEST(RingReload, A_damaged_time_in_a_later_line_of_the_older_part_throws_a_conversion_error)
{
    const std::string newer = "0x00000000\r\n" + Line(10, "new");
    const std::string bytes = newer + Line(7, "a") + Line(8, "b") + "9;d;x;2;c\r\n";
    EXPECT_THROW(Reload(bytes, static_cast<std::uint32_t>(newer.size())), std::invalid_argument);
}

// A gap that was never written has NULs. Where the torn line before it has no end, the record after
// the gap is part of the same line.
TEST(RingReload, A_line_with_a_NUL_is_no_record_in_either_part)
{
    const std::string gap(20, '\0');
    const std::string newer = "0x00000000\r\n" + Line(10, "new1") + "11;date;10" + gap +
                              Line(12, "lost") + gap + Line(13, "lost") + Line(14, "new2");
    const std::string bytes = newer + gap + Line(6, "no first line") + Line(7, "first") +
                              Line(8, "old1") + "9;date;1000;" + gap + Line(9, "lost") +
                              Line(10, "old2") + gap;
    const auto result = Reload(bytes, static_cast<std::uint32_t>(newer.size()));
    EXPECT_EQ((Records{{7, "old1"}, {8, "old2"}, {9, "new1"}, {10, "new2"}}), result.records);
    EXPECT_EQ(11, result.next);
}

// The first sector has its new bytes, the second one its old bytes.
TEST(RingReload, A_line_whose_parts_come_from_two_sectors_is_skipped)
{
    const std::string torn = "2;Sun Nov 16 03:52:36.123;1763265";
    std::string bytes = "0x00000000\r\n" + Line(0, "a");
    bytes += Line(1, std::string(512 - bytes.size() - torn.size() - Line(1, "").size(), 'x'));
    bytes += torn + "Sun Nov 16 03:52:36.123;1763265156123;2;old\r\n" + Line(3, "b");
    ASSERT_EQ(512U, bytes.find("Sun Nov 16 03:52:36.123;1763265156123"));
    const auto result = Reload(bytes, static_cast<std::uint32_t>(bytes.size()));
    ASSERT_EQ(3U, result.records.size());
    EXPECT_EQ("b", result.records[2].second);
}

// The header reached the disk and its record did not: where the record belongs stands the remainder
// of an older one.
TEST(RingReload, A_remainder_before_the_write_position_is_skipped)
{
    const std::string newer =
        "0x00000000\r\n" + Line(10, "new") + "xt;a;b;c;d;e\r\n" + "1;2;a;b;c\r\n";
    const std::string bytes = newer + Line(7, "first") + Line(8, "old");
    const auto result = Reload(bytes, static_cast<std::uint32_t>(newer.size()));
    EXPECT_EQ((Records{{7, "old"}, {8, "new"}}), result.records);
}

TEST(RingReload, The_number_after_the_largest_one_is_the_smallest)
{
    const std::string newer = "0x00000000\r\n" + Line(10, "new");
    const std::string bytes =
        newer + "9223372036854775807;d;1;2;x\r\n" + Line(1, "a") + Line(2, "b");
    const auto result = Reload(bytes, static_cast<std::uint32_t>(newer.size()));
    EXPECT_EQ(3U, result.records.size());
    EXPECT_EQ(INT64_MIN + 2, result.next);
}

TEST(RingReload, A_refused_read_or_seek_leaves_a_bad_stream_so_that_no_part_looks_empty)
{
    const std::string bytes = "0x00000000\r\n" + Line(3, "new") + Line(1, "rest") + Line(2, "old");
    const auto position = static_cast<std::uint32_t>(12 + Line(3, "new").size());
    const auto isBad = [&](int reads, int seeks) {
        RefusingFile refusing(bytes, reads, seeks);
        std::istream file(&refusing);
        static_cast<void>(
            ReloadRing(file, position, 0, [](std::int64_t, const LogHistoryEntry&) {}));
        return file.bad();
    };
    for (const int succeeding : {0, 1}) {
        EXPECT_TRUE(isBad(succeeding, 9)) << succeeding;
        EXPECT_TRUE(isBad(9, succeeding)) << succeeding;
    }
    EXPECT_FALSE(isBad(9, 9));
}

} // namespace vqrx::test
