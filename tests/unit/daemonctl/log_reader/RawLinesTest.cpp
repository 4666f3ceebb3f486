#include "RawLines.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace vqrx::test {
namespace {

using client::v0::MemorySource;
using client::v0::RawLine;
using client::v0::RawLines;

TEST(RawLines, end_with_line_feed_or_carriage_return_and_line_feed)
{
    MemorySource source("one\r\ntwo\n\r\nrest");
    RawLines lines(source, 0, source.Size());
    RawLine line;
    std::vector<std::string> texts;
    std::vector<std::uint64_t> offsets;
    while (lines.Next(line)) {
        texts.emplace_back(line.text);
        offsets.push_back(line.next);
        EXPECT_EQ(line.ended, line.next != source.Size());
    }
    EXPECT_EQ(texts, (std::vector<std::string>{"one", "two", "", "rest"}));
    EXPECT_EQ(offsets, (std::vector<std::uint64_t>{5, 9, 11, 15}));
}

TEST(RawLines, of_a_range_end_with_the_range)
{
    MemorySource source("one\ntwo\nthree\n");
    RawLines lines(source, 4, 11);
    RawLine line;
    ASSERT_TRUE(lines.Next(line));
    EXPECT_EQ(line.text, "two");
    ASSERT_TRUE(lines.Next(line));
    EXPECT_EQ(line.text, "thr");
    EXPECT_FALSE(line.ended);
    EXPECT_FALSE(lines.Next(line));
}

TEST(RawLines, that_cross_the_end_of_the_buffer_are_whole)
{
    std::string bytes;
    std::size_t count = 0;
    while (bytes.size() < 600000) { // more than two buffers
        bytes += std::string(count++ % 1000, 'x') + "\n";
    }
    MemorySource source(bytes);
    RawLines lines(source, 0, source.Size());
    RawLine line;
    std::size_t index = 0;
    while (lines.Next(line)) {
        ASSERT_EQ(line.text.size(), index++ % 1000);
        ASSERT_TRUE(line.ended && !line.tooLong);
    }
    EXPECT_EQ(index, count);
}

TEST(RawLines, longer_than_64_KiB_are_cut)
{
    const std::string bytes = std::string(1000000, 'x') + "\nnext\n";
    MemorySource source(bytes);
    RawLines lines(source, 0, source.Size());
    RawLine line;
    ASSERT_TRUE(lines.Next(line));
    EXPECT_EQ(line.text.size(), RawLines::kLongest);
    EXPECT_TRUE(line.tooLong);
    ASSERT_TRUE(lines.Next(line));
    EXPECT_EQ(line.text, "next");
    EXPECT_FALSE(line.tooLong);
}

} // namespace
} // namespace vqrx::test
