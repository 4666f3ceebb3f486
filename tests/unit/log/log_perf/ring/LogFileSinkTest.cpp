#include "log_perf/ring/LogFileSink.h"

#include "RingFileFixture.h"
#include "log_perf/time/DateText.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace vqrx::test {
namespace {

using log::log_perf::v2::DateText;
using log::log_perf::v2::LogFileSink;

using Texts = std::vector<std::string>;

} // namespace

TEST_F(RingFile, A_file_that_does_not_exist_is_created_with_the_first_record_at_offset_12)
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

TEST_F(RingFile, The_file_is_complete_on_disk_after_every_record)
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

TEST_F(RingFile, Levels_above_the_threshold_are_neither_written_nor_kept)
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

TEST_F(RingFile, The_record_that_passes_the_limit_is_written_whole_and_the_next_one_at_offset_12)
{
    LogFileSink sink;
    sink.SetFileName(name_);
    sink.SetSizeLimit(200);
    Write(sink, 2, std::string(100, 'a'));
    Write(sink, 2, std::string(100, 'b')); // passes the limit
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

TEST_F(RingFile, A_record_that_ends_at_the_limit_does_not_wrap_the_ring)
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

TEST_F(RingFile, The_ring_wraps_at_1_MiB_if_this_is_the_limit)
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

TEST_F(RingFile, A_file_that_never_wrapped_is_reopened_with_its_records_and_the_next_number)
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

TEST_F(RingFile, A_new_file_name_starts_a_new_file_and_history)
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

TEST_F(RingFile, Without_a_file_name_records_are_kept_only_in_memory)
{
    LogFileSink sink;
    Write(sink, 2, "a");
    Write(sink, 2, "b");
    EXPECT_EQ((Texts{"0:a", "1:b"}), History(sink));
}

TEST_F(RingFile, Other_programs_can_read_the_file_while_it_is_written)
{
    LogFileSink sink;
    sink.SetFileName(name_);
    Write(sink, 2, "a");
    std::ifstream reader(name_, std::ios::binary);
    ASSERT_TRUE(reader.is_open());
    Write(sink, 2, "b");
    EXPECT_EQ(Line(0, 2, "a") + Line(1, 2, "b"), Bytes().substr(12));
}

} // namespace vqrx::test
