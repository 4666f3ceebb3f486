#include "OutputReader.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdio>

#include <unistd.h>

namespace vqrx::test {
namespace {

using client::v0::ReaderHasGone;

TEST(OutputReader, Pipe_has_a_reader_until_its_other_end_is_closed)
{
    std::fflush(stdout);
    std::array<int, 2> ends{};
    ASSERT_EQ(pipe(ends.data()), 0);
    const int output = dup(STDOUT_FILENO);
    dup2(ends[1], STDOUT_FILENO);
    const bool goneAtFirst = ReaderHasGone();
    close(ends[0]);
    const bool goneAfterTheEnd = ReaderHasGone();
    dup2(output, STDOUT_FILENO);
    close(ends[1]);
    close(output);
    EXPECT_FALSE(goneAtFirst);
    EXPECT_TRUE(goneAfterTheEnd);
}

} // namespace
} // namespace vqrx::test
