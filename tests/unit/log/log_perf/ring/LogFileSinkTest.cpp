#include "log_perf/ring/LogFileSink.h"

#include "RingFileFixture.h"
#include "log_perf/time/DateText.h"

#include <gtest/gtest.h>

#include <cctype>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <random>
#include <stdexcept>

namespace vqrx::test {
namespace {

using log::log_perf::v2::DateText;
using log::log_perf::v2::LogFileSink;
using log::log_perf::v2::Timestamp;

using Texts = std::vector<std::string>;

} // namespace

TEST_F(RingFile, that_does_not_exist_is_created_with_its_header_and_the_first_record_at_offset_12)
{
    LogFileSink sink;
    sink.SetFileName(name_);
    EXPECT_FALSE(std::filesystem::exists(name_));
    Write(sink, 2, "hello");
    const std::string line = Line(0, 2, "hello");
    char header[16] = {};
    std::snprintf(header, sizeof header, "0x%.8X\r\n", static_cast<unsigned>(12 + line.size()));
    EXPECT_EQ(header + line, Bytes());
}

TEST_F(RingFile, is_complete_on_disk_after_every_record)
{
    LogFileSink sink;
    sink.SetFileName(name_);
    std::string records;
    for (int number = 0; number < 20; ++number) {
        Write(sink, number % 4, "text " + std::to_string(number));
        records += Line(number, number % 4, "text " + std::to_string(number));
        EXPECT_EQ(records, Bytes().substr(12));
    }
}

TEST_F(RingFile, keeps_levels_up_to_3_and_drops_higher_ones)
{
    LogFileSink sink;
    sink.SetFileName(name_);
    Write(sink, 4, "dropped");
    Write(sink, 3, "kept");
    EXPECT_EQ(Line(0, 3, "kept"), Bytes().substr(12));
    sink.SetThreshold(1);
    Write(sink, 2, "dropped");
    Write(sink, 1, "kept");
    EXPECT_EQ((Texts{"0:kept", "1:kept"}), History(sink));
}

TEST_F(RingFile, writes_the_record_that_passes_the_limit_whole_and_the_next_one_at_offset_12)
{
    LogFileSink sink;
    sink.SetFileName(name_);
    sink.SetSizeLimit(200);
    Write(sink, 2, std::string(100, 'a'));
    Write(sink, 2, std::string(100, 'b')); // crosses
    const std::string before = Bytes();
    EXPECT_EQ("0x0000000C\r\n", before.substr(0, 12));
    EXPECT_LT(200U, before.size());
    Write(sink, 2, "c");
    const std::string third = Line(2, 2, "c");
    const std::string after = Bytes();
    EXPECT_EQ(before.size(), after.size());
    EXPECT_EQ(third, after.substr(12, third.size()));
    EXPECT_EQ(before.substr(12 + third.size()), after.substr(12 + third.size()));
    EXPECT_EQ(12 + third.size(), std::stoul(after.substr(0, 10), nullptr, 16));
}

TEST_F(RingFile, starts_again_only_when_the_limit_is_passed_not_when_it_is_reached)
{
    LogFileSink sink;
    sink.SetFileName(name_);
    const std::string line = Line(0, 2, "x");
    sink.SetSizeLimit(static_cast<std::uint32_t>(12 + line.size()));
    Write(sink, 2, "x");
    EXPECT_EQ(12 + line.size(), std::stoul(Bytes().substr(0, 10), nullptr, 16));
    Write(sink, 2, "x");
    EXPECT_EQ(12U, std::stoul(Bytes().substr(0, 10), nullptr, 16));
}

TEST_F(RingFile, wraps_at_1_MiB_as_the_program_sets_it)
{
    LogFileSink sink;
    sink.SetFileName(name_);
    sink.SetSizeLimit(0x100000);
    std::size_t end = 12;
    int number = 0;
    const std::string text(1000, 'x');
    while (end <= 0x100000) {
        end += Line(number, 2, text).size();
        Write(sink, 2, text);
        ++number;
    }
    EXPECT_EQ(end, Bytes().size());
    EXPECT_EQ("0x0000000C", Bytes().substr(0, 10));
    Write(sink, 2, "next");
    EXPECT_EQ(end, Bytes().size());
    EXPECT_EQ(12 + Line(number, 2, "next").size(), std::stoul(Bytes().substr(0, 10), nullptr, 16));
}

TEST_F(RingFile, that_never_wrapped_is_reopened_with_its_records_and_the_next_number)
{
    {
        LogFileSink sink;
        sink.SetFileName(name_);
        Write(sink, 2, "a");
        Write(sink, 1, "b;c");
    }
    LogFileSink sink;
    sink.SetFileName(name_);
    Write(sink, 2, "d");
    EXPECT_EQ((Texts{"0:a", "1:b;c", "2:d"}), History(sink));
    EXPECT_EQ(Line(0, 2, "a") + Line(1, 1, "b;c") + Line(2, 2, "d"), Bytes().substr(12));
    const auto entries = sink.GetEntries(1, 1);
    ASSERT_EQ(1U, entries.size());
    EXPECT_EQ(1, entries[0].second.level);
    EXPECT_EQ(1795236736007, entries[0].second.time);
    EXPECT_EQ(DateText(At(kSeconds, 7)), entries[0].second.date);
}

TEST_F(RingFile, is_left_for_another_when_the_name_changes)
{
    LogFileSink sink;
    sink.SetFileName(name_);
    Write(sink, 2, "first file");
    const std::string other = folder_.File("other.log");
    sink.SetFileName(other);
    Write(sink, 2, "second file");
    EXPECT_EQ((Texts{"0:second file"}), History(sink));
    EXPECT_EQ(Line(0, 2, "first file"), Bytes().substr(12));
}

TEST_F(RingFile, without_a_name_keeps_records_in_memory_only)
{
    LogFileSink sink;
    Write(sink, 2, "a");
    Write(sink, 2, "b");
    EXPECT_EQ((Texts{"0:a", "1:b"}), History(sink));
}

TEST_F(RingFile, can_be_read_by_others_while_it_is_written)
{
    LogFileSink sink;
    sink.SetFileName(name_);
    Write(sink, 2, "a");
    std::ifstream reader(name_, std::ios::binary);
    ASSERT_TRUE(reader.is_open());
    Write(sink, 2, "b");
    EXPECT_EQ(Line(0, 2, "a") + Line(1, 2, "b"), Bytes().substr(12));
}

TEST_F(RingFile, that_is_empty_is_taken_over)
{
    Put("");
    LogFileSink sink;
    sink.SetFileName(name_);
    Write(sink, 2, "a");
    EXPECT_EQ(Line(0, 2, "a"), Bytes().substr(12));
}

TEST_F(RingFile, that_another_program_filled_is_taken_over)
{
    Put("This is; quite another; kind of file.\nWith lines\n");
    LogFileSink sink;
    sink.SetFileName(name_);
    Write(sink, 2, "a");
    EXPECT_EQ((Texts{"0:a"}), History(sink));
    EXPECT_EQ(Line(0, 2, "a"), Bytes().substr(12, Line(0, 2, "a").size()));
}

TEST_F(RingFile, cut_in_mid_record_is_taken_over)
{
    {
        LogFileSink sink;
        sink.SetFileName(name_);
        Write(sink, 2, "first");
        Write(sink, 2, "second");
    }
    const std::string bytes = Bytes();
    Put(bytes.substr(0, bytes.size() - 20));
    LogFileSink sink;
    sink.SetFileName(name_);
    Write(sink, 2, "third"); // the header points beyond the end: writing starts at the front again
    EXPECT_EQ("third", sink.GetEntries(-1, -1).at(0).second.text);
    EXPECT_EQ(12U, Bytes().find(std::to_string(sink.GetEntries(-1, -1).at(0).first) + ";"));
}

TEST_F(RingFile, with_a_damaged_number_raises_at_every_record_until_it_is_gone)
{
    Put("0x0000001F\r\n0;date;x;2;damaged\r\n");
    LogFileSink sink;
    sink.SetFileName(name_);
    EXPECT_THROW(Write(sink, 2, "a"), std::invalid_argument);
    EXPECT_THROW(Write(sink, 2, "b"), std::invalid_argument);
    std::filesystem::remove(name_);
    Write(sink, 2, "c");
    EXPECT_EQ((Texts{"0:c"}), History(sink));
}

// Two rounds end beyond the limit, the second one less far: behind its last record stands what the
// first has left there, and nothing ever overwrites it.
TEST_F(RingFile, whose_end_holds_the_rest_of_a_longer_record_is_taken_over)
{
    {
        LogFileSink sink;
        sink.SetFileName(name_);
        sink.SetSizeLimit(200);
        Write(sink, 2, std::string(100, 'a'));
        Write(sink, 2, "x;" + std::string(90, 'b') + ";c;d;e;f;g;h;i");
        Write(sink, 2, std::string(100, 'c'));
        Write(sink, 2, std::string(60, 'd'));
    }
    const std::string bytes = Bytes();
    ASSERT_TRUE(bytes.ends_with("d\r\nb;c;d;e;f;g;h;i\r\n") ||
                bytes.ends_with("b;c;d;e;f;g;h;i\r\n"));
    LogFileSink sink;
    sink.SetFileName(name_);
    sink.SetSizeLimit(200);
    EXPECT_NO_THROW(Write(sink, 2, "after"));
    EXPECT_NE(std::string::npos, Bytes().find(";after\r\n"));
}

TEST_F(RingFile, is_taken_over_whatever_separators_its_texts_have)
{
    std::mt19937 random(20261121);
    for (int round = 0; round < 60; ++round) {
        std::filesystem::remove(name_);
        const auto limit = static_cast<std::uint32_t>(100 + random() % 2000);
        for (int run = 0; run < 20; ++run) {
            LogFileSink sink;
            sink.SetFileName(name_);
            sink.SetSizeLimit(limit);
            for (auto records = random() % 12 + 1; records != 0; --records) {
                ASSERT_NO_THROW(
                    Write(sink, 2, "a;b;c;d;e;" + std::string(random() % 90, 'x') + ";f;g;h;i;j"))
                    << round << ' ' << run << '\n'
                    << Bytes();
            }
        }
    }
}

TEST_F(RingFile, replaced_by_a_folder_is_tried_again_at_every_record)
{
    std::filesystem::create_directory(name_);
    LogFileSink sink;
    sink.SetFileName(name_);
    Write(sink, 2, "a");
    Write(sink, 2, "b");
    std::filesystem::remove(name_);
    Write(sink, 2, "c");
    EXPECT_EQ(Line(0, 2, "c"), Bytes().substr(12));
}

TEST_F(RingFile, whose_folder_is_missing_is_tried_again_at_every_record)
{
    const std::string name = folder_.File("Logs") + "/DaemonManager.log";
    LogFileSink sink;
    sink.SetFileName(name);
    Write(sink, 2, "a");
    std::filesystem::create_directory(folder_.Path() / "Logs");
    Write(sink, 2, "b");
    std::ifstream file(name, std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(file), {}};
    EXPECT_EQ(Line(0, 2, "b"), bytes.substr(12));
}

TEST_F(RingFile, emptied_while_it_is_open_is_written_on)
{
    LogFileSink sink;
    sink.SetFileName(name_);
    Write(sink, 2, "a");
    Put("");
    Write(sink, 2, "b");
    EXPECT_NE(std::string::npos, Bytes().find(Line(1, 2, "b")));
    LogFileSink again;
    again.SetFileName(name_);
    Write(again, 2, "c");
    EXPECT_NE(std::string::npos, Bytes().find(";c\r\n"));
}

// Random lengths, limits and reopenings: the file always holds exactly the newest records that the
// ring has not overwritten, and a reload finds them in their order.
TEST_F(RingFile, holds_the_newest_records_in_order_whatever_their_lengths_and_reopenings)
{
    std::mt19937 random(20261121);
    for (int round = 0; round < 30; ++round) {
        std::filesystem::remove(name_);
        const auto limit = static_cast<std::uint32_t>(100 + random() % 2000);
        auto sink = std::make_unique<LogFileSink>();
        sink->SetFileName(name_);
        sink->SetSizeLimit(limit);
        Texts written;
        for (int record = 0; record < 120; ++record) {
            if (random() % 20 == 0) {
                sink = std::make_unique<LogFileSink>();
                sink->SetFileName(name_);
                sink->SetSizeLimit(limit);
            }
            written.push_back("<" + std::to_string(record) + std::string(random() % 80, 'x') + ">");
            Write(*sink, 2, written.back());
        }
        sink.reset();

        LogFileSink reader;
        reader.SetFileName(name_);
        Write(reader, 2, "end");
        Texts found;
        for (const auto& [number, entry] : reader.GetEntries(0, -1)) {
            found.push_back(entry.text);
        }
        written.emplace_back("end");
        ASSERT_FALSE(found.empty());
        ASSERT_LE(found.size(), written.size());
        const Texts newest(written.end() - static_cast<std::ptrdiff_t>(found.size()),
                           written.end());
        EXPECT_EQ(newest, found) << "round " << round << " limit " << limit;
        // At most one record (the one behind the write position) is on disk and not found.
        std::size_t onDisk = 0;
        const std::string bytes = Bytes();
        for (const std::string& text : written) {
            const std::string tail = Line(0, 2, text).substr(1); // without its number
            const std::size_t position = bytes.find(tail);
            onDisk += position != std::string::npos && std::isdigit(bytes[position - 1]) ? 1U : 0U;
        }
        EXPECT_LE(onDisk, found.size() + 1);
    }
}

} // namespace vqrx::test
