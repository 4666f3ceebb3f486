#include "log_perf/ring/LineReader.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

namespace vqrx::test {

using log::log_perf::v2::LineReader;

TEST(LineReader, A_line_that_is_too_long_is_cut_and_the_next_line_is_found)
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

TEST(LineReader, The_position_counts_line_ends_and_an_unfinished_last_line)
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
