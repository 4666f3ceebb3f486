#include "RingScan.h"

#include "RingModel.h"
#include "ScannedRing.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

namespace vqrx::test {
namespace {

using client::v0::Record;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::Field;
using testing::IsEmpty;

TEST(RingScan, finds_no_records_in_a_new_file)
{
    const Scanned scanned = Scan("0x00000000\r\n");
    EXPECT_THAT(scanned.records, IsEmpty());
    EXPECT_TRUE(scanned.summary.IsSound());
}

TEST(RingScan, returns_the_records_of_a_file_that_was_never_full_in_the_order_of_the_file)
{
    RingModel ring;
    ring.Write("first");
    ring.Write("second;with;separators", 0);
    ring.Write("", 3);
    const Scanned scanned = Scan(ring.Bytes());
    EXPECT_THAT(scanned.records, ElementsAreArray(ring.Intact()));
    EXPECT_THAT(Texts(scanned), ElementsAre("first", "second;with;separators", ""));
    EXPECT_TRUE(scanned.summary.IsSound());
    EXPECT_EQ(scanned.summary.torn, 0U);
}

TEST(RingScan, returns_the_older_records_after_the_write_position_first)
{
    const std::string older = Line("8", "older") + Line("9", "old");
    const std::string newer = Line("10", "new") + Line("11", "newer");
    const std::string bytes =
        Header(static_cast<unsigned>(12 + newer.size())) + newer + "cut\r\n" + older;
    const Scanned scanned = Scan(bytes);
    EXPECT_THAT(Texts(scanned), ElementsAre("older", "old", "new", "newer"));
    EXPECT_EQ(scanned.summary.torn, 1U);
    EXPECT_TRUE(scanned.summary.IsSound());
}

TEST(RingScan, leaves_out_a_record_whose_number_has_lost_digits)
{
    // Record 1237: the newest record has overwritten the digits 1 and 2 of its number, nothing
    // else.
    const std::string newer = Line("2000", "new") + Line("2001", "newer");
    const std::string bytes = Header(static_cast<unsigned>(12 + newer.size())) + newer +
                              Line("37", "torn") + Line("1238", "older") + Line("1239", "old");
    const Scanned scanned = Scan(bytes);
    EXPECT_THAT(Texts(scanned), ElementsAre("older", "old", "new", "newer"));
    EXPECT_EQ(scanned.summary.torn, 1U);
}

TEST(RingScan, leaves_out_remainders_at_the_end_of_the_file)
{
    const std::string newer = Line("2000", "new");
    const std::string bytes = Header(static_cast<unsigned>(12 + newer.size())) + newer + "cut\r\n" +
                              Line("1998", "older") + Line("1999", "old") +
                              Line("37", "remainder") + "mainder of another\r\n";
    const Scanned scanned = Scan(bytes);
    EXPECT_THAT(Texts(scanned), ElementsAre("older", "old", "new"));
    EXPECT_EQ(scanned.summary.torn, 3U);
    EXPECT_TRUE(scanned.summary.IsSound());
}

TEST(RingScan, returns_all_records_if_a_restarted_supervisor_continues_with_another_number)
{
    const std::string newer = Line("2000", "new") + Line("2000", "started") + Line("7", "again");
    const std::string bytes = Header(static_cast<unsigned>(12 + newer.size())) + newer + "cut\r\n" +
                              Line("1997", "older") + Line("1997", "start") + Line("1998", "old") +
                              Line("1999", "last");
    EXPECT_THAT(Texts(Scan(bytes)),
                ElementsAre("older", "start", "old", "last", "new", "started", "again"));
}

TEST(RingScan, leaves_out_a_record_that_the_header_does_not_count_yet)
{
    RingModel ring(300, 998);
    for (int index = 0; index < 30; ++index) {
        ring.Write("record " + std::to_string(index));
    }
    for (std::size_t bytes = 1; bytes < 70; ++bytes) {
        RingModel writing = ring;
        writing.BeginWrite("being written", bytes);
        const std::vector<Record> shown = Scan(writing.Bytes()).records;
        // At offset 12 the record that is being written may leave doubt about the oldest one.
        std::vector<Record> intact = writing.Intact();
        if (shown.size() + 1 == intact.size()) {
            intact.erase(intact.begin());
        }
        EXPECT_THAT(shown, ElementsAreArray(intact)) << bytes;
    }
}

// Rings of a few records. The numbers gain a digit in some of them.
TEST(RingScan, returns_exactly_the_intact_records_of_random_rings)
{
    std::mt19937 random(20251116); // NOLINT(cert-msc32-c,cert-msc51-cpp): the same on every run
    for (int round = 0; round < 12; ++round) {
        RingModel ring(320 + random() % 400, static_cast<std::int64_t>(random() % 2000));
        for (int index = 0; index < 120; ++index) {
            ring.Write(std::string(random() % 40, 'x') + (random() % 3 == 0 ? ";1;2;3;4" : ""));
            const Scanned scanned = Scan(ring.Bytes());
            ASSERT_THAT(scanned.records, ElementsAreArray(ring.Intact()))
                << "round " << round << ", record " << index << "\n"
                << ring.Bytes();
            ASSERT_TRUE(scanned.summary.IsSound()) << ring.Bytes();
            RingModel writing = ring;
            writing.BeginWrite("being written", random() % 80);
            // The record that is being written may leave doubt about the oldest record only.
            const std::vector<Record> shown = Scan(writing.Bytes()).records;
            std::vector<Record> intact = writing.Intact();
            if (shown.size() + 1 == intact.size()) {
                intact.erase(intact.begin());
            }
            ASSERT_THAT(shown, ElementsAreArray(intact))
                << "round " << round << ", record " << index << " and another begun\n"
                << writing.Bytes();
        }
    }
}

TEST(RingScan, finds_the_order_if_the_header_is_damaged)
{
    RingModel ring(400, 50);
    for (int index = 0; index < 40; ++index) {
        ring.Write("record " + std::to_string(index));
    }
    for (const std::string header : {"0xFFFFFFFF\r\n", "0x00000021\r\n", "garbage!!!\r\n"}) {
        const Scanned scanned = Scan(header + ring.Bytes().substr(12));
        EXPECT_THAT(scanned.records, ElementsAreArray(ring.Intact())) << header;
        EXPECT_TRUE(scanned.summary.headerDamaged) << header;
        EXPECT_FALSE(scanned.summary.IsSound()) << header;
    }
}

TEST(RingScan, returns_every_record_if_the_header_names_the_end_of_another_record)
{
    for (const std::size_t limit : {std::size_t{0}, std::size_t{400}}) {
        RingModel ring(limit, 50);
        for (int index = 0; index < 43; ++index) {
            ring.Write("record " + std::to_string(index));
        }
        ASSERT_NE(ring.WritePosition(), 12U);
        const std::string bytes = ring.Bytes();
        const std::vector<Record> intact = ring.Intact();
        for (std::size_t end = bytes.find('\n', 12); end != std::string::npos;
             end = bytes.find('\n', end + 1)) {
            const std::size_t position = end + 1;
            // One record after the write position is usual: the supervisor may be writing it.
            const std::size_t late = bytes.find('\n', position) + 1;
            if (position == ring.WritePosition() || late == ring.WritePosition()) {
                continue;
            }
            const Scanned scanned =
                Scan(Header(static_cast<unsigned>(position)) + bytes.substr(12));
            EXPECT_THAT(scanned.records, ElementsAreArray(intact)) << limit << ", " << position;
            EXPECT_FALSE(scanned.summary.IsSound()) << limit << ", " << position;
        }
    }
}

TEST(RingScan, returns_the_whole_records_of_a_file_that_was_cut)
{
    RingModel ring;
    ring.Write("first");
    ring.Write("second");
    ring.Write("third");
    const Scanned scanned = Scan(ring.Bytes().substr(0, ring.Bytes().size() - 10));
    EXPECT_THAT(Texts(scanned), ElementsAre("first", "second"));
    EXPECT_EQ(scanned.summary.torn, 1U);
    EXPECT_FALSE(scanned.summary.IsSound());
}

TEST(RingScan, reads_a_copy_with_converted_line_ends)
{
    RingModel ring;
    ring.Write("first");
    ring.Write("second");
    std::string bytes = ring.Bytes();
    std::erase(bytes, '\r');
    EXPECT_THAT(Texts(Scan(bytes)), ElementsAre("first", "second"));
}

TEST(RingScan, counts_lines_that_are_no_records_and_returns_all_records)
{
    const std::string lines = Line("1", "first") + "of another program\r\n" +
                              "2;Sun Nov 16 03:52:36.123;never;2;no time\r\n" +
                              "3;Sun Nov 16 03:52:36.123;1763265156123;high;no level\r\n" +
                              "4;Sun Nov 16 03:52:36.123;99999999999999999999;2;no time\r\n" +
                              Line("x", "no number") + Line("99999999999999999999", "nor this") +
                              Line("7", "last");
    const Scanned scanned = Scan(Header(static_cast<unsigned>(12 + lines.size())) + lines);
    EXPECT_THAT(Texts(scanned), ElementsAre("first", "no number", "nor this", "last"));
    EXPECT_THAT(scanned.records[1], Field(&Record::number, std::nullopt));
    EXPECT_EQ(scanned.summary.unreadable, 4U);
    EXPECT_EQ(scanned.summary.damaged, 2U);
    EXPECT_FALSE(scanned.summary.IsSound());
}

TEST(RingScan, finds_no_records_in_files_of_other_programs)
{
    EXPECT_TRUE(Scan("").summary.isEmpty);
    const Scanned text = Scan("once upon a time\nthere was a file\n");
    EXPECT_THAT(text.records, IsEmpty());
    EXPECT_EQ(text.summary.unreadable, 2U);
    const Scanned zeros = Scan(std::string(300000, '\0'));
    EXPECT_THAT(zeros.records, IsEmpty());
    EXPECT_FALSE(zeros.summary.IsSound());
    const Scanned afterAHeader = Scan("0x0000000C\r\nonce\r\nupon\r\na time\r\n");
    EXPECT_THAT(afterAHeader.records, IsEmpty());
    EXPECT_FALSE(afterAHeader.summary.IsSound());
}

TEST(RingScan, skips_a_line_that_is_longer_than_any_record)
{
    const std::string lines =
        Line("1", "first") + Line("2", std::string(70000, 'x')) + Line("3", "last");
    const Scanned scanned = Scan(Header(static_cast<unsigned>(12 + lines.size())) + lines);
    EXPECT_THAT(Texts(scanned), ElementsAre("first", "last"));
    EXPECT_EQ(scanned.summary.unreadable, 1U);
}

} // namespace
} // namespace vqrx::test
