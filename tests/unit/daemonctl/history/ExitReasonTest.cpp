#include "ExitReason.h"

#include <gtest/gtest.h>

#include <optional>

namespace vqrx::test {
namespace {

using client::v0::ReadableReason;

TEST(ReadableReason, Exit_code_is_a_decimal_number_up_to_65535_and_hexadecimal_above)
{
    EXPECT_EQ(ReadableReason("Unknown (0x0)"), "exit code 0");
    EXPECT_EQ(ReadableReason("Unknown (0xffff)"), "exit code 65535");
    EXPECT_EQ(ReadableReason("Unknown (0xffffffff)"), "exit code 0xffffffff");
    EXPECT_EQ(ReadableReason("Access violation"), "Access violation");
    EXPECT_EQ(ReadableReason("Unknown (0xzz)"), "Unknown (0xzz)");
    EXPECT_EQ(ReadableReason("Unknown (0x)"), "Unknown (0x)");
    EXPECT_EQ(ReadableReason("Unknown (0x1"), "Unknown (0x1");
}

TEST(DescribeExitCode, An_exit_code_has_the_words_that_its_reason_in_the_log_has)
{
    EXPECT_EQ(client::v0::DescribeExitCode(3), "exit code 3");
    EXPECT_EQ(client::v0::DescribeExitCode(0xFFFFFFFF), "exit code 0xffffffff");
    EXPECT_EQ(client::v0::DescribeExitCode(0xC0000005), "Access violation");
}

TEST(ExitCodeOfReason, Named_and_unnamed_codes_are_found_and_other_texts_are_none)
{
    using client::v0::ExitCodeOfReason;
    EXPECT_EQ(ExitCodeOfReason("Unknown (0x3)"), 3U);
    EXPECT_EQ(ExitCodeOfReason("Unknown (0xffffffff)"), 0xFFFFFFFFU);
    EXPECT_EQ(ExitCodeOfReason("Access violation"), 0xC0000005U);
    EXPECT_EQ(ExitCodeOfReason("Stack overflow"), 0xC00000FDU);
    for (const char* reason : {"", "stopped on request", "Unknown (0x)", "Unknown (0x123456789)"}) {
        EXPECT_EQ(ExitCodeOfReason(reason), std::nullopt) << reason;
    }
}

} // namespace
} // namespace vqrx::test
